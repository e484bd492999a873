#include "output/Progress.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace orloview {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using Mode = Progress::Mode;
using Stage = Progress::Stage;

/// A progress on a file, with a clock that the test sets and a terminal of a width that it chooses.
class ProgressTest : public testing::Test {
protected:
    ~ProgressTest() override { std::fclose(fFile); }

    Progress start(Mode mode) {
        return {mode, fFile, [this] { return fSeconds; }, [this] { return fColumns; }};
    }

    /// What was written since the last call.
    std::string written() {
        std::fflush(fFile);
        std::string text(static_cast<size_t>(std::ftell(fFile)), '\0');
        std::rewind(fFile);
        EXPECT_EQ(std::fread(text.data(), 1, text.size(), fFile), text.size());
        std::rewind(fFile);
        return text;
    }

    std::FILE* fFile = std::tmpfile();
    double fSeconds = 100.0;
    int fColumns = 60;
};

TEST_F(ProgressTest, aBarAppearsLateMovesSeldomAndTakesItselfAway) {
    Progress progress = start(Mode::Bar);
    progress.begin(Stage::Read);
    fSeconds += 0.29;
    progress.update(0.5);
    EXPECT_EQ(written(), "") << "a small model is not worth a bar";
    fSeconds += 0.02;
    progress.update(0.5);
    const std::string bar = written();
    EXPECT_EQ(bar.size(), 60u) << "a return and one column less than there are";
    EXPECT_THAT(bar, HasSubstr("read"));
    EXPECT_THAT(bar, HasSubstr("#."));
    EXPECT_THAT(bar, EndsWith(" 50%"));
    fSeconds += 0.04;
    progress.update(0.9);
    EXPECT_EQ(written(), "") << "not more than 20 times a second";
    fSeconds += 0.02;
    fColumns = 30;
    progress.update(0.9);
    EXPECT_EQ(written().size(), 60u) << "what is left of the wider bar is painted over";

    progress.clear();
    EXPECT_EQ(written(), "\r" + std::string(29, ' ') + "\r");
    progress.clear();
    EXPECT_EQ(written(), "") << "nothing is there to take away";
    fSeconds += 1.0;
    progress.begin(Stage::Write);
    EXPECT_THAT(written(), HasSubstr("write"));
    progress.finish();
    EXPECT_THAT(written(), EndsWith(" \r"));
}

TEST_F(ProgressTest, fitsAnyTerminalAndCutsWhatIsNoFraction) {
    Progress progress = start(Mode::Bar);
    progress.begin(Stage::Prepare);
    for (const auto& [columns, size] : {std::pair{500, 80u}, {80, 80u}, {10, 10u}, {1, 1u}}) {
        fColumns = columns;
        fSeconds += 1.0;
        progress.clear();
        written();
        progress.update(0.3);
        EXPECT_EQ(written().size(), size) << columns;
    }
    fColumns = 40;
    for (const auto& [fraction, text] :
         {std::pair{2.0, "100%"}, {-1.0, "  0%"}, {std::numeric_limits<double>::quiet_NaN(), "  0%"}}) {
        fSeconds += 1.0;
        progress.update(fraction);
        EXPECT_THAT(written(), HasSubstr(text));
    }
}

TEST_F(ProgressTest, plainLinesTellPercentOnceASecondAndTheTimeOfEachStage) {
    {
        Progress progress = start(Mode::Plain);
        progress.begin(Stage::Upload);
        fSeconds += 0.5;
        progress.update(0.2);
        EXPECT_EQ(written(), "");
        fSeconds += 0.75;
        progress.update(0.425);
        progress.update(0.5);
        EXPECT_EQ(written(), "orloview: upload, 42%\n");
        progress.begin(Stage::Draw);
        EXPECT_EQ(written(), "orloview: upload, done in 1.25 s\n");
    }
    EXPECT_EQ(written(), "") << "a stage that failed is not done";
    Progress silent = start(Mode::Silent);
    silent.begin(Stage::Read);
    fSeconds += 9.0;
    silent.update(0.5);
    silent.finish();
    EXPECT_EQ(written(), "");
}

} // namespace
} // namespace orloview
