#include "app/EngineFolders.hpp"
#include "base/SupportFolder.hpp"
#include "support/TempDir.hpp"

#include <gtest/gtest.h>

namespace tallowen {
namespace {

TEST(EngineFoldersTest, TheNamedFoldersComeFirstAndAMissingDataFolderIsCreated) {
    testing::TempDir scratch;
    const std::string home = scratch.path().string();
    const auto named = engineEnvironment({home, home + "/data/sub", std::string("/nowhere"), std::nullopt});
    ASSERT_TRUE(named) << named.error();
    EXPECT_EQ(named->homeFolder, scratch.path());
    EXPECT_TRUE(std::filesystem::is_directory(scratch.path() / "data/sub"));

    const auto fallback = engineEnvironment({std::nullopt, std::nullopt, home, home + "/xdg"});
    ASSERT_TRUE(fallback) << fallback.error();
    EXPECT_EQ(fallback->supportFolder, defaultSupportFolder(currentHostPlatform(), scratch.path(), home + "/xdg"));
}

TEST(EngineFoldersTest, EachUnusableFolderIsOneLineForTheUser) {
    testing::TempDir scratch;
    const std::string home = scratch.path().string();
    scratch.write("file", "not a folder");
    EXPECT_EQ(engineEnvironment({}).error(), "no home folder: set HOME or pass --home DIR");
    EXPECT_EQ(engineEnvironment({home + "/missing", {}, {}, {}}).error(), "cannot read the home folder " + home + "/missing");
    EXPECT_EQ(engineEnvironment({home, home + "/file/data", {}, {}}).error(),
              "cannot create the data folder " + home + "/file/data");
}

}  // namespace
}  // namespace tallowen
