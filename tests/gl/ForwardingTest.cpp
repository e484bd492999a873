// Each member of the table, called once, reaches the GL function that it stands for, with its arguments in
// their places, and hands the result back.

#define GL_GLEXT_PROTOTYPES
#define GLX_GLXEXT_PROTOTYPES
#include "DoubleTest.h"

#include <tuple>

namespace {

constexpr uint64_t kAnswer = 77;

/// A value that no other place of the same call has. Pointers lead to storage of their own, which the double
/// may write to.
template <typename T>
T distinctValue(size_t place) {
    alignas(16) static char storage[16][64];
    if constexpr (std::is_pointer_v<T>)
        return reinterpret_cast<T>(storage[place]);
    else if constexpr (std::is_floating_point_v<T>)
        return static_cast<T>(place) + T(1.25);
    else
        return static_cast<T>(place + 1);
}

template <typename... Arguments, size_t... kPlaces>
std::tuple<Arguments...> distinctValues(std::index_sequence<kPlaces...>) {
    return {distinctValue<Arguments>(kPlaces)...};
}

void scriptAnswer(const char* function) {
    script().answers[function] = [](const std::vector<Argument>&) { return kAnswer; };
    clearRecorded();
}

void expectCall(const char* function, const std::vector<Argument>& arguments, bool answered) {
    EXPECT_EQ(recorded(), Calls{formatCall(function, arguments)});
    EXPECT_TRUE(answered) << "the result of " << function;
}

/// The types are those of the GL header's declaration, not of the member.
template <typename Member, typename Result, typename... Arguments>
void expectForwarded(GLFunctionTable& table, Member member, const char* function, Result (*)(Arguments...)) {
    const auto call = [&](Arguments... values) {
        bool answered = true;
        if constexpr (std::is_void_v<Result>)
            (table.*member)(values...);
        else
            answered = (Result)(table.*member)(values...) == (Result)kAnswer;
        expectCall(function, {Argument(values)...}, answered);
    };
    scriptAnswer(function);
    std::apply(call, distinctValues<Arguments...>(std::index_sequence_for<Arguments...>()));
}

class Forwarding : public DoubleTest {
protected:
    Forwarding() { script().rawPointers = true; }
};

TEST_F(Forwarding, everyMemberReachesItsFunction) {
// Start-up leaves some slots null. A member's name may lack its function's suffix.
#define ENTRY_AS(ret, member, name, ...)                                                                     \
    if (!gl().f##name)                                                                                       \
        gl().f##name = ::name;                                                                               \
    EXPECT_THAT(#name, testing::AnyOf(#member, #member "ARB", #member "EXT"));                               \
    expectForwarded(gl(), &GLFunctionTable::member, #name, &::name);
#define ENTRY_CORE(ret, name, ...) ENTRY_AS(ret, name, name)
#define ENTRY_GLX(when, ret, name, ...) ENTRY_AS(ret, name, name)
#include "gl/GLEntryPoints.inc"
}

TEST_F(Forwarding, theFreePbufferFunctionTakesTheTablesEntry) {
    int attributes[] = {0};
    EXPECT_EQ(glXCreateGLXPbuffer(fakeDisplay(), nthConfig(), 3, 4, attributes), nthName(NameKind::Pbuffer));
    EXPECT_EQ(recorded(),
              Calls{call("glXCreateGLXPbufferSGIX", fakeDisplay(), nthConfig(), 3, 4, attributes)});
    gl().nullify_platform();
    EXPECT_EQ(glXCreateGLXPbuffer(fakeDisplay(), nthConfig(), 3, 4, attributes), 0u);
    GLFunctionTable::fpGlobalFunctionTable = nullptr;
    EXPECT_EQ(glXCreateGLXPbuffer(fakeDisplay(), nthConfig(), 3, 4, attributes), 0u);
}

} // namespace
