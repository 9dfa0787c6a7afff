// Library start and stop: re-entry, the locale, the resource path and the stale temp sweep.
#include <gtest/gtest.h>
#include <unistd.h>

#include <clocale>
#include <filesystem>
#include <string>

#include "Common/Exception.h"
#include "PDF/Ferrox.h"
#include "support/TestSupport.h"

using lum::PDF::Ferrox;
namespace fs = std::filesystem;
using namespace lum::test;

namespace {

TEST(Ferrox, SecondStartIsNoOpAndOneStopEndsAll) {
    Ferrox::Terminate();
    EXPECT_FALSE(Ferrox::IsInitialized());
    Ferrox::Initialize();
    Ferrox::Initialize();
    EXPECT_TRUE(Ferrox::IsInitialized());
    Ferrox::Terminate();
    EXPECT_FALSE(Ferrox::IsInitialized());
    Ferrox::Terminate();  // a stop without a start does nothing
    EXPECT_FALSE(Ferrox::IsInitialized());
    // And it starts again after a stop.
    Ferrox::Initialize();
    EXPECT_TRUE(Ferrox::IsInitialized());
    Ferrox::Terminate();
}

TEST(Ferrox, StartSetsTheCLocale) {
    Ferrox::Terminate();
    if (!std::setlocale(LC_ALL, "C.UTF-8")) GTEST_SKIP() << "no C.UTF-8 locale to start from";
    ASSERT_STRNE("C", std::setlocale(LC_ALL, nullptr));
    Ferrox::Initialize();
    EXPECT_STREQ("C", std::setlocale(LC_ALL, nullptr));
    char buf[32];
    std::snprintf(buf, sizeof buf, "%g", 595.28);
    EXPECT_STREQ("595.28", buf);
    Ferrox::Terminate();
}

TEST(Ferrox, ResourcesPathMustOpenAsFile) {
    TempDir dir;
    WriteFile(dir / "res.bin", "x");
    EXPECT_TRUE(Ferrox::SetResourcesPath((dir / "res.bin").string()));
    // A folder doesn't open, nor does the folder joined with the (empty) resource file name.
    EXPECT_FALSE(Ferrox::SetResourcesPath(dir.path().string()));
    EXPECT_FALSE(Ferrox::SetResourcesPath((dir / "missing").string()));
    EXPECT_FALSE(Ferrox::SetResourcesPath(""));
    EXPECT_FALSE(Ferrox::SetResourcesPath("c:\\"));
}

TEST(Ferrox, SweepRemovesFilesOfDeadProcessesOnly) {
    TempDir dir;
    const std::string me = std::to_string(getpid());
    // Above the largest process id Linux hands out, so no process can have it.
    const std::string dead = "4194999";
    struct {
        std::string name;
        bool stays;
    } files[] = {
        {"Lum-" + dead + "-1700000000-abc", false},
        {"Lum-" + dead + "-1-", false},           // empty tail after the last minus
        {"Lum-99999999999999999999-1-x", false},  // a number no process can have
        {"Lum-" + me + "-1700000000-abc", true},  // this process runs
        {"Lum-1-1-x", true},                      // init always runs
        {"Lum-" + dead + "-abc", true},           // one number only
        {"Lum-" + dead + "-1700000000", true},    // no tail
        {"Lum-x" + dead + "-1-x", true},
        {"Lumber-" + dead + "-1-x", true},
        {"Zantrix-" + dead + "-1-x", true},  // another prefix than the one swept
        {"lum-" + dead + "-1-x", true},      // the prefix is matched by case
        {"xLum-" + dead + "-1-x", true},     // whole names only
    };
    for (const auto& f : files) WriteFile(dir / f.name, "");
    Ferrox::SweepStaleTempFiles(dir.path().string(), "Lum");
    for (const auto& f : files) EXPECT_EQ(f.stays, fs::exists(dir / f.name)) << f.name;

    Ferrox::SweepStaleTempFiles(dir.path().string(), "Zantrix");
    EXPECT_FALSE(fs::exists(dir / ("Zantrix-" + dead + "-1-x")));
    // A folder that isn't one is no error.
    Ferrox::SweepStaleTempFiles((dir / "nothing").string(), "Lum");
    Ferrox::SweepStaleTempFiles("", "Lum");
}

TEST(Ferrox, SweepSurvivesEntriesThatCannotBeRemoved) {
    TempDir dir;
    // A non-empty folder with a matching name can't be removed; the sweep goes on past it.
    WriteFile(dir / "Lum-4194999-1-a" / "inner", "x");
    WriteFile(dir / "Lum-4194999-1-b", "");
    Ferrox::SweepStaleTempFiles(dir.path().string(), "Lum");
    EXPECT_TRUE(fs::exists(dir / "Lum-4194999-1-a" / "inner"));
    EXPECT_FALSE(fs::exists(dir / "Lum-4194999-1-b"));
}

}  // namespace
