#include "platform/system/AtomicFile.h"

#include "support/Files.h"

#include <grp.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using kv::AtomicFile;
using kv::FileState;
using kv::test::FileSizeLimit;
using kv::test::TemporaryFolder;

constexpr HRESULT kFileNotFound = MakeResult(0x80070002);
constexpr HRESULT kPathNotFound = MakeResult(0x80070003);
constexpr HRESULT kNameTooLong = MakeResult(0x800700CE);
constexpr HRESULT kFileTooLarge = MakeResult(0x800700DF);

/// Within its scope the process is bound by permissions, as any user but root is.
class OrdinaryUser {
public:
    OrdinaryUser()
    {
        constexpr uid_t kNobody = 65534;
        if (m_before == 0) {
            EXPECT_EQ(seteuid(kNobody), 0);
        }
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;
    ~OrdinaryUser() { EXPECT_EQ(seteuid(m_before), 0); }

private:
    const uid_t m_before = geteuid();
};

class AtomicFileTest : public testing::Test {
protected:
    HRESULT Replace(std::string_view name, std::string_view content)
    {
        AtomicFile file;
        HRESULT result = file.Create(folder.PathOf(name));
        if (SUCCEEDED(result)) result = file.Write(content.data(), content.size());
        if (SUCCEEDED(result)) result = file.Commit();
        return result;
    }

    mode_t Permissions(std::string_view name)
    {
        struct stat status {};
        EXPECT_EQ(stat(folder.PathOf(name).c_str(), &status), 0);
        return status.st_mode & 07777;
    }

    TemporaryFolder folder;
};

TEST_F(AtomicFileTest, ReplacesTheFileAsAWholeWhenItIsCommitted)
{
    folder.Write("file", "what was there, and longer");
    {
        AtomicFile file;
        for (const HRESULT result : {file.Write("x", 1), file.Commit()})
            EXPECT_EQ(result, E_UNEXPECTED) << "not started";
        ASSERT_EQ(file.Create(folder.PathOf("file")), S_OK);
        ASSERT_EQ(file.Write("new", 3), S_OK);
        // A second start drops the first.
        ASSERT_EQ(file.Create(folder.PathOf("file")), S_OK);
        EXPECT_EQ(folder.Entries(), 2);
    }
    EXPECT_EQ(folder.Entries(), 1);
    AtomicFile file;
    ASSERT_EQ(file.Create(folder.PathOf("file")), S_OK);
    EXPECT_EQ(file.Write("ne", 2), S_OK);
    EXPECT_EQ(file.Write("w", 1), S_OK);
    EXPECT_EQ(folder.Read("file"), "what was there, and longer") << "changed before the end";
    ASSERT_EQ(file.Commit(), S_OK);
    EXPECT_EQ(folder.Read("file"), "new");
    EXPECT_EQ(AtomicFile::LastCommitted(), FileState::Of(folder.PathOf("file")));
    EXPECT_EQ(Replace("other", "new"), S_OK);
    ASSERT_EQ(rename(folder.PathOf("other").c_str(), folder.PathOf("file").c_str()), 0);
    EXPECT_EQ(AtomicFile::LastCommitted(), FileState::Of(folder.PathOf("file"))) << "by any name";
    folder.Write("file", "not");
    EXPECT_NE(AtomicFile::LastCommitted(), FileState::Of(folder.PathOf("file"))) << "written by others";
    EXPECT_EQ(folder.Entries(), 1);
    for (const HRESULT result : {file.Write("x", 1), file.Commit()})
        EXPECT_EQ(result, E_UNEXPECTED) << "ended";
    ASSERT_EQ(file.Create(folder.PathOf("file")), S_OK);
    ASSERT_EQ(file.Commit(), S_OK);
    EXPECT_EQ(folder.Read("file"), "");
}

TEST_F(AtomicFileTest, AFailureLeavesTheOldFileAndNothingBehind)
{
    folder.Write("file", "old");
    std::filesystem::create_directory(folder.Path() / "sub");
    {
        const FileSizeLimit limit(100);
        EXPECT_EQ(Replace("file", std::string(1000, 'x')), kFileTooLarge);
    }
    const std::string longest(255, 'n');
    for (const auto& [name, result] : {std::pair<std::string, HRESULT>{"missing/file", kFileNotFound},
                                       {"file/below", kPathNotFound},
                                       {"sub", E_ACCESSDENIED},
                                       {longest, S_OK},
                                       {longest, S_OK},
                                       {longest + 'n', kNameTooLong}})
        EXPECT_EQ(Replace(name, "new"), result) << name;
    EXPECT_EQ(folder.Read(longest), "new");
    ASSERT_EQ(chmod(folder.PathOf("file").c_str(), 0444), 0);
    ASSERT_EQ(chmod(folder.PathOf("").c_str(), 0777), 0);
    {
        const OrdinaryUser user;
        EXPECT_EQ(Replace("file", "new"), E_ACCESSDENIED) << "write-protected";
        EXPECT_EQ(Replace("fresh", "new"), S_OK);
    }
    EXPECT_EQ(folder.Read("file"), "old");
    EXPECT_EQ(folder.Entries(), 4);
}

TEST_F(AtomicFileTest, KeepsPermissions)
{
    folder.Write("file", "old");
    for (const mode_t mode : {0600u, 0640u, 0755u}) {
        ASSERT_EQ(chmod(folder.PathOf("file").c_str(), mode), 0);
        EXPECT_EQ(Replace("file", "new"), S_OK);
        EXPECT_EQ(Permissions("file"), mode);
    }
    const mode_t before = umask(027);
    EXPECT_EQ(Replace("fresh", "new"), S_OK);
    EXPECT_EQ(umask(before), 027u) << "the process's mask was changed";
    EXPECT_EQ(Permissions("fresh"), 0640u);
}

TEST_F(AtomicFileTest, LinksAndPipesStayWhatTheyAre)
{
    folder.Write("file", "old");
    std::filesystem::create_directory(folder.Path() / "sub");
    for (const auto& [link, file] : {std::pair{"link", "file"}, {"dangling", "sub/file"}, {"round", "round"}})
        std::filesystem::create_symlink(file, folder.Path() / link);
    EXPECT_EQ(Replace("link", "new"), S_OK);
    EXPECT_EQ(folder.Read("file"), "new");
    EXPECT_EQ(Replace("dangling", "new"), S_OK);
    EXPECT_EQ(folder.Read("sub/file"), "new");
    EXPECT_TRUE(FAILED(Replace("round", "new")));
    for (const char* link : {"link", "dangling", "round"})
        EXPECT_TRUE(std::filesystem::is_symlink(folder.Path() / link)) << link;

    ASSERT_EQ(mkfifo(folder.PathOf("pipe").c_str(), 0600), 0);
    EXPECT_EQ(Replace("pipe", "new"), E_ACCESSDENIED);
    EXPECT_TRUE(std::filesystem::is_fifo(folder.Path() / "pipe"));
    EXPECT_EQ(folder.Entries(), 6);
}

TEST_F(AtomicFileTest, KeepsOwnerAndGroup)
{
    if (geteuid() != 0) GTEST_SKIP() << "only root gives files away";
    folder.Write("file", "old");
    ASSERT_EQ(chown(folder.PathOf("file").c_str(), 1234, 2345), 0);
    ASSERT_EQ(chmod(folder.PathOf("file").c_str(), 0666), 0);
    ASSERT_EQ(chmod(folder.PathOf("").c_str(), 0777), 0);
    const auto expectOwner = [&](uid_t owner, gid_t group, mode_t mode = 0666) {
        struct stat status {};
        ASSERT_EQ(stat(folder.PathOf("file").c_str(), &status), 0);
        EXPECT_EQ(status.st_uid, owner);
        EXPECT_EQ(status.st_gid, group);
        EXPECT_EQ(status.st_mode & 07777, mode);
    };
    ASSERT_EQ(Replace("file", "new"), S_OK);
    expectOwner(1234, 2345);

    // Another user of the group cannot give the file back to its owner, but leaves it in the group.
    const gid_t before = getegid();
    const gid_t shared = 2345;
    ASSERT_EQ(setgroups(1, &shared), 0);
    {
        const OrdinaryUser user;
        EXPECT_EQ(Replace("file", "newer"), S_OK);
    }
    ASSERT_EQ(setgroups(1, &before), 0);
    expectOwner(65534, 2345);

    // Nor can a stranger leave it in the group; what the group may do, and who runs it does it as, goes with that.
    ASSERT_EQ(chmod(folder.PathOf("file").c_str(), 06676), 0);
    {
        const OrdinaryUser user;
        EXPECT_EQ(Replace("file", "newest"), S_OK);
    }
    expectOwner(65534, before, 0606);
}

TEST_F(AtomicFileTest, TheNextSaveRemovesWhatOneThatDiedLeft)
{
    for (const std::string& name : {std::string("file"), std::string(255, 'n')}) {
        const pid_t child = fork();
        if (child == 0) {
            AtomicFile file;
            _exit(SUCCEEDED(file.Create(folder.PathOf(name))) ? 0 : 1);
        }
        int status = -1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_EQ(status, 0);
        ASSERT_EQ(folder.Entries(), 1) << "the child left nothing to remove";
        EXPECT_EQ(Replace(name, "new"), S_OK);
        EXPECT_EQ(folder.Entries(), 1);
        std::filesystem::remove(folder.PathOf(name));
    }
}

TEST_F(AtomicFileTest, SavesOfOneFileDoNotDisturbEachOther)
{
    std::vector<AtomicFile> saves(8);
    for (AtomicFile& save : saves) {
        ASSERT_EQ(save.Create(folder.PathOf("file")), S_OK);
        ASSERT_EQ(save.Write("new", 3), S_OK);
    }
    EXPECT_EQ(Replace("file", "one too many"), MakeResult(0x80070020));
    for (AtomicFile& save : saves) {
        EXPECT_EQ(save.Commit(), S_OK);
        EXPECT_EQ(folder.Read("file"), "new");
    }
    EXPECT_EQ(folder.Entries(), 1);
}

} // namespace
