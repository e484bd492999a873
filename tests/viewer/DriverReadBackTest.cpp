#include "DriverTest.h"

#include "draw/ReadBack.h"

#include <string>
#include <vector>

namespace orloview {
namespace {

class DriverReadBack : public DriverTest {};

/// What is read of three frames, each of a colour of its own and drawn once the one before is asked for.
std::string threeFrames(GLFunctionTable& gl, ReadBack::Order order,
                        const std::optional<Block>& drawn = std::nullopt) {
    constexpr int kFactor = 2;
    std::string told;
    Canvas canvas(Canvas::Kind::Picture, 60, 100 * kFactor);
    ReadBack readBack(canvas, 2, order);
    for (const float red : {0.25F, 0.5F, 1.0F}) {
        canvas.makeCurrent();
        canvas.target().makeCurrent();
        gl.glDisable(GL_SCISSOR_TEST);
        gl.glClearColor(red, 0.0F, 0.0F, 1.0F);
        gl.glClear(GL_COLOR_BUFFER_BIT);
        gl.glEnable(GL_SCISSOR_TEST); // the upper part is blue too, and further right than is read
        gl.glScissor(0, 80 * kFactor, 60, 100 * kFactor);
        gl.glClearColor(red, 0.0F, 0.5F, 1.0F);
        gl.glClear(GL_COLOR_BUFFER_BIT);
        ReadPart part{25, 100, kFactor, [&told](int row, int rows, const Samples& samples) {
                          const auto* halves = static_cast<const std::uint16_t*>(samples.first);
                          const int width = std::min(samples.right, 25) - samples.left;
                          const size_t values = size_t{kFactor} * 4 * kFactor * width * rows;
                          told += std::to_string(row) + "+" + std::to_string(rows) + ": ";
                          told += halves ? std::to_string(halves[0]) + " to " +
                                               std::to_string(halves[values - 4]) + " " +
                                               std::to_string(halves[values - 2]) + "\n"
                                         : "nothing\n";
                          std::promise<void> done;
                          done.set_value();
                          return done.get_future().share();
                      }};
        part.drawn = drawn;
        part.begin = [&told] { told += "begin\n"; };
        part.end = [&told] { told += "end\n"; };
        readBack.read(std::move(part));
    }
    readBack.finish();
    return told;
}

TEST_F(DriverReadBack, whatComesLaterIsWhatComesAtOnce) {
    if (!gl().usable(kCapTextureFloat))
        GTEST_SKIP() << "no floats";
    std::string expected;
    for (const int red : {0x3400, 0x3800, 0x3C00}) { // halves
        const std::string from = std::to_string(red) + " to " + std::to_string(red);
        expected += "begin\n0+32: " + from + " 0\n32+32: " + from + " 0\n64+32: " + from +
                    " 14336\n96+4: " + from + " 14336\nend\n";
    }
    EXPECT_EQ(threeFrames(gl(), ReadBack::Order::AtOnce), expected);
    EXPECT_EQ(threeFrames(gl(), ReadBack::Order::Later), expected);

    const Block drawn{20, 70, 5, 20}; // up to where it is blue, and on
    const std::string last =
        "begin\n0+32: nothing\n32+32: nothing\n64+6: nothing\n70+20: 15360 to 15360 14336"
        "\n90+10: nothing\nend\n";
    const std::string some = threeFrames(gl(), ReadBack::Order::AtOnce, drawn);
    EXPECT_TRUE(some.ends_with(last)) << some;
    EXPECT_EQ(threeFrames(gl(), ReadBack::Order::Later, drawn), some);
    EXPECT_TRUE(threeFrames(gl(), ReadBack::Order::Later, Block{}).ends_with("96+4: nothing\nend\n"));
    gl().glDisable(GL_SCISSOR_TEST);
    expectNoErrors();
}

} // namespace
} // namespace orloview
