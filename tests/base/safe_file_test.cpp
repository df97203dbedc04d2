#include "base/safe_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace orvanel {
namespace {

namespace fs = std::filesystem;

std::vector<std::uint8_t> content_of(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class SafeFile : public testing::Test {
  protected:
    void SetUp() override {
        std::string name = (fs::temp_directory_path() / "orvanel.XXXXXX").string();
        folder = mkdtemp(name.data());
        image = folder / "Orvanel42.bin";
    }
    void TearDown() override { fs::remove_all(folder); }

    [[nodiscard]] int names() const {
        return static_cast<int>(std::distance(fs::directory_iterator(folder), {}));
    }

    fs::path folder, image;
    const std::vector<std::uint8_t> first = std::vector<std::uint8_t>(32768, 1);
    const std::vector<std::uint8_t> second = std::vector<std::uint8_t>(32768, 2);
    const std::vector<std::uint8_t> third = std::vector<std::uint8_t>(32768, 3);
};

TEST_F(SafeFile, keeps_the_former_file_and_its_mode) {
    EXPECT_EQ(replace_file(image, first, Backup::keep), "");
    EXPECT_EQ(names(), 1) << "nothing was there to keep";
    chmod(image.c_str(), 0640);
    EXPECT_EQ(replace_file(image, second, Backup::keep), "");
    EXPECT_EQ(replace_file(image, third, Backup::keep), "");
    EXPECT_EQ(content_of(image), third);
    EXPECT_EQ(content_of(image.string() + ".bak"), second);
    EXPECT_EQ(fs::status(image).permissions(), fs::perms(0640));
    EXPECT_EQ(names(), 2) << "nothing else is left lying about";
}

TEST_F(SafeFile, follows_links_and_survives_a_backup_that_is_the_file_itself) {
    const fs::path target = folder / "elsewhere.bin";
    fs::create_symlink("elsewhere.bin", image);
    EXPECT_EQ(replace_file(image, first, Backup::keep), "") << "a link to a file that isn't there";
    // As a kill between the two renames leaves it.
    fs::create_hard_link(target, target.string() + ".bak");
    EXPECT_EQ(replace_file(image, second, Backup::keep), "");
    EXPECT_TRUE(fs::is_symlink(image));
    EXPECT_EQ(content_of(target), second);
    EXPECT_EQ(content_of(target.string() + ".bak"), first);
    EXPECT_EQ(names(), 3);
}

TEST_F(SafeFile, a_chain_of_links_without_an_end_is_refused) {
    fs::create_symlink("loop", folder / "loop");
    EXPECT_EQ(replace_file(folder / "loop", first, Backup::none),
              "Too many levels of symbolic links");
    EXPECT_EQ(names(), 1);
}

TEST_F(SafeFile, a_write_that_fails_leaves_the_old_file_and_says_why) {
    ASSERT_EQ(replace_file(image, first, Backup::none), "");
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small{1000, limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    const std::string reason = replace_file(image, second, Backup::keep);
    setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(reason, "File too large");
    EXPECT_EQ(content_of(image), first);
    EXPECT_EQ(names(), 1);
    EXPECT_EQ(replace_file(folder / "none" / "x", first, Backup::none),
              "No such file or directory");
    EXPECT_EQ(replace_file("/dev/full", first, Backup::keep), "No space left on device");
    EXPECT_TRUE(fs::is_character_file("/dev/full")) << "a device is written, not replaced";
}

TEST_F(SafeFile, what_the_user_has_write_protected_stays) {
    const fs::path backup = image.string() + ".bak";
    ASSERT_EQ(replace_file(image, first, Backup::none), "");
    ASSERT_EQ(replace_file(backup, third, Backup::none), "");
    chmod(backup.c_str(), 0444);
    EXPECT_EQ(replace_file(image, second, Backup::keep), "");
    EXPECT_EQ(content_of(backup), third);
    EXPECT_EQ(content_of(backup.string() + ".1"), first);
    chmod(image.c_str(), 0444);
    EXPECT_EQ(replace_file(image, third, Backup::none), "write-protected");
    EXPECT_EQ(content_of(image), second);
    EXPECT_EQ(names(), 3);
}

TEST_F(SafeFile, a_folder_in_the_place_of_the_backup_costs_neither_file) {
    ASSERT_EQ(replace_file(image, first, Backup::none), "");
    fs::create_directory(image.string() + ".bak");
    EXPECT_EQ(replace_file(image, second, Backup::keep), "");
    EXPECT_EQ(content_of(image), second);
    EXPECT_EQ(content_of(image.string() + ".bak.1"), first);
}

TEST_F(SafeFile, removes_the_parts_of_processes_that_are_gone) {
    const pid_t child = fork();
    if (child == 0) _exit(0);
    waitpid(child, nullptr, 0);
    const std::string gone = "." + std::to_string(child) + ".part";
    const std::string lives = "." + std::to_string(getppid()) + ".part";
    for (const std::string& end : {gone, ".bak" + gone, lives, ".x" + gone, std::string(".part")})
        std::ofstream(image.string() + end) << "half";
    fs::create_directory(image.string() + ".0" + gone.substr(1));
    fs::create_symlink("nowhere", image.string() + ".00" + gone.substr(1));
    EXPECT_EQ(replace_file(image, first, Backup::keep), "");
    EXPECT_FALSE(fs::exists(image.string() + gone));
    EXPECT_FALSE(fs::exists(image.string() + ".bak" + gone));
    EXPECT_EQ(names(), 6) << "the image, and what is no part of a process that is gone";
}

}  // namespace
}  // namespace orvanel
