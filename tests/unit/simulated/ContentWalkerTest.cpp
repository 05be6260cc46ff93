// The walk through a device: what counts, what is left out, and when it ends.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "ContentWalker.h"
#include "TvTest.h"

namespace {

using platform::MediaType;
using platform::WalkLimits;
using platform::WalkOutcome;
using platform::WalkResult;

class ContentWalkerTest : public ::testing::Test {
protected:
    WalkResult walk(const WalkLimits& limits = {}) const {
        const std::atomic<bool> cancelled{false};
        return platform::walkContent(stick.path(), cancelled, limits);
    }
    void link(const std::string& target, const std::string& name) const {
        std::filesystem::create_symlink(target, stick.path() + "/" + name);
    }

    TempFolder stick;
};

TEST_F(ContentWalkerTest, FindsNothingInAnEmptyFolder) {
    EXPECT_EQ(walk().outcome, WalkOutcome::None);
}

TEST_F(ContentWalkerTest, FindsTheOnlyMediaFileWithItsPathTypeSizeAndTime) {
    stick.file("readme.txt");
    const std::string photo = stick.file("DCIM/100/only.JPG", "12345");
    const timespec times[2] = {{1, 0}, {1'600'000'000, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, photo.c_str(), times, 0), 0);
    const WalkResult result = walk();
    EXPECT_EQ(result.outcome, WalkOutcome::Single);
    EXPECT_EQ(result.file.path, photo);
    EXPECT_EQ(result.file.type, MediaType::Photo);
    EXPECT_EQ(result.file.size, 5);
    EXPECT_EQ(result.file.modified, 1'600'000'000);
}

TEST_F(ContentWalkerTest, TellsTheKindsApart) {
    const std::pair<const char*, MediaType> kinds[] = {
        {"a.png", MediaType::Photo}, {"a.mkv", MediaType::Video}, {"a.flac", MediaType::Music}};
    for (const auto& [name, type] : kinds) {
        const TempFolder own;
        own.file(name);
        const std::atomic<bool> cancelled{false};
        const WalkResult result = platform::walkContent(own.path(), cancelled);
        EXPECT_EQ(result.outcome, WalkOutcome::Single) << name;
        EXPECT_EQ(result.file.type, type) << name;
    }
}

TEST_F(ContentWalkerTest, FindsAFilmOfMoreThanFourGibibytesWithItsWholeSize) {
    const std::string film = stick.file("film.mkv");
    constexpr off_t SIZE = off_t{5} << 30;
    ASSERT_EQ(truncate(film.c_str(), SIZE), 0);
    const WalkResult result = walk();
    EXPECT_EQ(result.outcome, WalkOutcome::Single);
    EXPECT_EQ(result.file.size, SIZE);
}

TEST_F(ContentWalkerTest, FindsAPhotoWhoseTimeIsMoreThanASigned32BitNumberHolds) {
    const std::string photo = stick.file("photo.jpg");
    const timespec times[2] = {{1, 0}, {4'102'444'800, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, photo.c_str(), times, 0), 0);
    const WalkResult result = walk();
    EXPECT_EQ(result.outcome, WalkOutcome::Single);
    EXPECT_EQ(result.file.modified, 4'102'444'800);
}

TEST_F(ContentWalkerTest, EndsAtTheSecondMediaFileOfAnyKind) {
    stick.file("a.jpg");
    stick.file("deep/down/b.mp3");
    EXPECT_EQ(walk().outcome, WalkOutcome::Several);
}

TEST_F(ContentWalkerTest, AcceptsAFolderWithASlashAtItsEnd) {
    stick.file("a.jpg");
    const std::atomic<bool> cancelled{false};
    EXPECT_EQ(platform::walkContent(stick.path() + "//", cancelled).file.path,
              stick.path() + "/a.jpg");
}

TEST_F(ContentWalkerTest, AcceptsAFolderThatIsALinkItself) {
    stick.file("real/a.jpg");
    link("real", "mount");
    const std::atomic<bool> cancelled{false};
    const WalkResult result = platform::walkContent(stick.path() + "/mount", cancelled);
    EXPECT_EQ(result.file.path, stick.path() + "/mount/a.jpg");
}

TEST_F(ContentWalkerTest, LeavesHiddenFilesAndFoldersOut) {
    stick.file(".hidden.jpg");
    stick.file(".Trashes/a.jpg");
    stick.file("b/.thumbnails/c.jpg");
    EXPECT_EQ(walk().outcome, WalkOutcome::None);
}

TEST_F(ContentWalkerTest, LeavesTheFoldersOfDeletedFilesOutAtTheTopOnly) {
    stick.file("$RECYCLE.BIN/deleted.jpg");
    stick.file("Recycler/deleted.jpg");
    stick.file("System Volume Information/x.jpg");
    EXPECT_EQ(walk().outcome, WalkOutcome::None);
    stick.file("my/recycler/kept.jpg");
    EXPECT_EQ(walk().outcome, WalkOutcome::Single);
}

TEST_F(ContentWalkerTest, FollowsNoLinkNeitherToFilesNorToFolders) {
    const TempFolder elsewhere;
    const std::string foreign = elsewhere.file("foreign.jpg");
    link(foreign, "a.jpg");
    link(elsewhere.path(), "folder");
    link("..", "up");
    link(".", "loop");
    link("dangling", "b.jpg");
    EXPECT_EQ(walk().outcome, WalkOutcome::None);
    stick.file("real.jpg");
    EXPECT_EQ(walk().outcome, WalkOutcome::Single);
}

TEST_F(ContentWalkerTest, OpensNoPipeThatBearsTheNameOfAMediaFile) {
    ASSERT_EQ(mkfifo((stick.path() + "/a.mp4").c_str(), 0600), 0);
    std::filesystem::create_directory(stick.path() + "/b.mp4");
    EXPECT_EQ(walk().outcome, WalkOutcome::None);
}

TEST_F(ContentWalkerTest, EntersNoOtherFileSystem) {
    // Shared memory is a file system of its own below the folder of the device nodes.
    std::string mounted = "/dev/shm/portmeld-test-XXXXXX";
    ASSERT_NE(mkdtemp(mounted.data()), nullptr);
    std::ofstream(mounted + "/foreign.jpg") << "x";
    struct stat outer {};
    struct stat inner {};
    ASSERT_EQ(stat("/dev", &outer), 0);
    ASSERT_EQ(stat("/dev/shm", &inner), 0);
    ASSERT_NE(outer.st_dev, inner.st_dev);
    const std::atomic<bool> cancelled{false};
    EXPECT_EQ(platform::walkContent("/dev", cancelled).outcome, WalkOutcome::None);
    EXPECT_EQ(platform::walkContent(mounted, cancelled).outcome, WalkOutcome::Single);
    std::filesystem::remove_all(mounted);
}

TEST_F(ContentWalkerTest, FindsNothingWhereThereIsNoFolder) {
    const std::atomic<bool> cancelled{false};
    EXPECT_EQ(platform::walkContent(stick.path() + "/missing", cancelled).outcome,
              WalkOutcome::None);
    EXPECT_EQ(platform::walkContent("", cancelled).outcome, WalkOutcome::None);
    EXPECT_EQ(platform::walkContent(stick.file("a.jpg"), cancelled).outcome, WalkOutcome::None);
}

/// While it lives the process has no right to pass over permissions.
class WithoutPrivileges {
public:
    WithoutPrivileges() { EXPECT_TRUE(geteuid() != 0 || seteuid(NOBODY) == 0); }
    ~WithoutPrivileges() { EXPECT_TRUE(getuid() != 0 || seteuid(0) == 0); }
    WithoutPrivileges(const WithoutPrivileges&) = delete;
    WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;

private:
    static constexpr uid_t NOBODY = 65534;
};

TEST_F(ContentWalkerTest, SkipsFoldersThatCannotBeRead) {
    stick.file("closed/a.jpg");
    stick.file("open/b.jpg");
    ASSERT_EQ(chmod(stick.path().c_str(), 0755), 0);
    ASSERT_EQ(chmod((stick.path() + "/closed").c_str(), 0), 0);
    WalkResult result;
    {
        const WithoutPrivileges reader;
        result = walk();
    }
    ASSERT_EQ(chmod((stick.path() + "/closed").c_str(), 0755), 0);
    EXPECT_EQ(result.outcome, WalkOutcome::Single);
    EXPECT_EQ(result.file.path, stick.path() + "/open/b.jpg");
    EXPECT_EQ(walk().outcome, WalkOutcome::Several);
}

TEST_F(ContentWalkerTest, DoesNotCareForBytesThatAreNoText) {
    const std::string name = "\xff\xfe\n caf\xe9.jpg";
    stick.file("\xc3/" + name);
    const WalkResult result = walk();
    EXPECT_EQ(result.outcome, WalkOutcome::Single);
    EXPECT_EQ(result.file.path, stick.path() + "/\xc3/" + name);
}

TEST_F(ContentWalkerTest, ReachesWhatIsLongerThanAPathMayBe) {
    // Made step by step: no single call could name it.
    int at = open(stick.path().c_str(), O_RDONLY | O_DIRECTORY);
    const std::string name(200, 'd');
    for (int depth = 0; depth < 40; ++depth) {
        ASSERT_EQ(mkdirat(at, name.c_str(), 0700), 0);
        const int next = openat(at, name.c_str(), O_RDONLY | O_DIRECTORY);
        close(at);
        at = next;
    }
    const int file = openat(at, "deep.mp3", O_WRONLY | O_CREAT, 0600);
    ASSERT_GE(file, 0);
    close(file);
    close(at);
    const WalkResult result = walk();
    EXPECT_EQ(result.outcome, WalkOutcome::Single);
    EXPECT_GT(result.file.path.size(), 8000U);
}

TEST_F(ContentWalkerTest, GivesUpInFoldersThatAreDeeperThanTheLimit) {
    stick.file("1/2/3/a.jpg");
    WalkLimits limits;
    limits.depth = 3;
    EXPECT_EQ(walk(limits).outcome, WalkOutcome::TooLarge);
    limits.depth = 4;
    EXPECT_EQ(walk(limits).outcome, WalkOutcome::Single);
}

TEST_F(ContentWalkerTest, GivesUpAtMoreNamesThanTheLimit) {
    for (int i = 0; i < 20; ++i) {
        stick.file("f" + std::to_string(i) + ".txt");
    }
    WalkLimits limits;
    limits.entries = 19;
    EXPECT_EQ(walk(limits).outcome, WalkOutcome::TooLarge);
    limits.entries = 20;
    EXPECT_EQ(walk(limits).outcome, WalkOutcome::None);
}

TEST_F(ContentWalkerTest, LooksAtTheFilesOfAFolderBeforeItsFolders) {
    // In whatever order the file system tells names, a folder is likely to be among the first.
    for (int i = 0; i < 20; ++i) {
        stick.file("deep" + std::to_string(i) + "/1/2/3/a.txt");
    }
    stick.file("a.jpg");
    stick.file("b.jpg");
    WalkLimits limits;
    limits.depth = 3;
    EXPECT_EQ(walk(limits).outcome, WalkOutcome::Several);
}

TEST_F(ContentWalkerTest, EntersEveryFolder) {
    for (int i = 0; i < 20; ++i) {
        const std::string outer = "outer" + std::to_string(i);
        stick.file(outer + "/one/a.txt");
        stick.file(outer + "/two/three/b.txt");
    }
    WalkLimits limits;
    limits.entries = 20 + 20 * 5;
    EXPECT_EQ(walk(limits).outcome, WalkOutcome::None);
    --limits.entries;
    EXPECT_EQ(walk(limits).outcome, WalkOutcome::TooLarge);
}

TEST_F(ContentWalkerTest, CountsHiddenNamesTowardsTheLimitToo) {
    for (int i = 0; i < 20; ++i) {
        stick.file(".f" + std::to_string(i));
    }
    WalkLimits limits;
    limits.entries = 19;
    EXPECT_EQ(walk(limits).outcome, WalkOutcome::TooLarge);
}

TEST_F(ContentWalkerTest, EndsWhenItIsCancelled) {
    stick.file("a.jpg");
    const std::atomic<bool> cancelled{true};
    EXPECT_EQ(platform::walkContent(stick.path(), cancelled).outcome, WalkOutcome::Cancelled);
}

}  // namespace
