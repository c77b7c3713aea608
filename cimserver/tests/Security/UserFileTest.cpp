#include <Pegasus/Security/Authenticator.h>
#include <Pegasus/Security/UserFile.h>

#include <gtest/gtest.h>

#include <openssl/evp.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

using namespace Pegasus;

namespace {

class TempDir
{
public:
    TempDir()
    {
        char tmpl[] = "/tmp/usertest.XXXXXX";
        _path = mkdtemp(tmpl);
    }
    ~TempDir() { std::system(("rm -rf " + _path).c_str()); }
    std::string file(const std::string& name) const { return _path + "/" + name; }

private:
    std::string _path;
};

std::string basic(const std::string& userColonPassword)
{
    std::vector<unsigned char> out(userColonPassword.size() * 2 + 8);
    int n = EVP_EncodeBlock(out.data(),
                            reinterpret_cast<const unsigned char*>(userColonPassword.data()),
                            int(userColonPassword.size()));
    return "Basic " + std::string(reinterpret_cast<char*>(out.data()), size_t(n));
}

} // namespace

TEST(UserFile, AddVerifyChangeRemove)
{
    TempDir dir;
    UserFile users(dir.file("cimserver.passwd"));
    EXPECT_FALSE(users.verify("alice", "x"));   // no file yet: no users
    users.addUser("alice", "s3cret pass");
    users.addUser("bob", "other");
    EXPECT_TRUE(users.verify("alice", "s3cret pass"));
    EXPECT_FALSE(users.verify("alice", "s3cret pas"));
    EXPECT_FALSE(users.verify("Alice", "s3cret pass"));
    EXPECT_THROW(users.addUser("alice", "again"), UserFile::Error);

    users.setPassword("alice", "new");
    EXPECT_FALSE(users.verify("alice", "s3cret pass"));
    EXPECT_TRUE(users.verify("alice", "new"));

    users.removeUser("bob");
    EXPECT_THROW(users.removeUser("bob"), UserFile::Error);
    EXPECT_THROW(users.setPassword("bob", "x"), UserFile::Error);
    EXPECT_EQ(users.listUsers(), std::vector<std::string>{"alice"});

    // Stored salted: no password text in the file, mode 0600, two hashes of
    // the same password differ.
    std::ifstream in(dir.file("cimserver.passwd"));
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_EQ(text.find("new"), std::string::npos);
    EXPECT_EQ(text.compare(0, 9, "alice:$6$"), 0);
    struct stat st;
    ASSERT_EQ(stat(dir.file("cimserver.passwd").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);
    EXPECT_NE(UserFile::hashPassword("same"), UserFile::hashPassword("same"));
}

TEST(UserFile, RefusesBadNamesAndPasswords)
{
    TempDir dir;
    UserFile users(dir.file("p"));
    for (const char* name : {"", "-rf", "a b", "a:b", "a\nb", "x;y", "$(id)", "../etc"})
        EXPECT_THROW(users.addUser(name, "pw"), UserFile::Error) << name;
    EXPECT_THROW(users.addUser(std::string(65, 'a'), "pw"), UserFile::Error);
    EXPECT_THROW(users.addUser("ok", ""), UserFile::Error);
    EXPECT_THROW(users.addUser("ok", "line\nbreak"), UserFile::Error);
    EXPECT_THROW(users.addUser("ok", std::string(257, 'p')), UserFile::Error);
    EXPECT_TRUE(users.listUsers().empty());
}

TEST(UserFile, ReloadsChangesMadeByAnotherWriterAndRejectsBrokenFiles)
{
    TempDir dir;
    UserFile server(dir.file("p"));
    UserFile tool(dir.file("p"));
    EXPECT_FALSE(server.verify("carol", "pw"));
    tool.addUser("carol", "pw");
    EXPECT_TRUE(server.verify("carol", "pw"));
    tool.removeUser("carol");
    EXPECT_FALSE(server.verify("carol", "pw"));

    std::ofstream(dir.file("broken")) << "dave:$6$abc$def\nnocolon\n";
    UserFile broken(dir.file("broken"));
    try
    {
        broken.verify("dave", "x");
        FAIL() << "broken file accepted";
    }
    catch (const UserFile::Error& e)
    {
        EXPECT_NE(std::string(e.what()).find(":2:"), std::string::npos) << e.what();
    }
}

TEST(UserFile, ConcurrentWritersLoseNothing)
{
    TempDir dir;
    std::string path = dir.file("p");
    const int writers = 4, each = 3;
    std::vector<pid_t> children;
    for (int w = 0; w < writers; ++w)
    {
        pid_t pid = fork();
        ASSERT_GE(pid, 0);
        if (pid == 0)
        {
            UserFile users(path);
            for (int i = 0; i < each; ++i)
                users.addUser("u" + std::to_string(w) + "_" + std::to_string(i), "pw");
            _exit(0);
        }
        children.push_back(pid);
    }
    for (pid_t pid : children)
    {
        int status = 0;
        waitpid(pid, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    UserFile users(path);
    EXPECT_EQ(users.listUsers().size(), size_t(writers * each));
}

TEST(Authenticator, BasicCredentialsAndSlowdown)
{
    TempDir dir;
    UserFile users(dir.file("p"));
    users.addUser("orvadmin", "pass:with:colons");
    Authenticator auth(users, true);

    auto ok = auth.check(basic("orvadmin:pass:with:colons"), "10.0.0.1");
    EXPECT_TRUE(ok.authenticated);
    EXPECT_EQ(ok.user, "orvadmin");
    EXPECT_EQ(ok.delay.count(), 0);

    // Missing credentials: a plain challenge, not a failed attempt.
    auto none = auth.check("", "10.0.0.1");
    EXPECT_FALSE(none.authenticated);
    EXPECT_EQ(none.delay.count(), 0);

    for (const char* bad : {"Basic", "Basic !!!!", "Digest abc", "Basic Zm9v" /* no colon */})
        EXPECT_FALSE(auth.check(bad, "10.0.0.9").authenticated) << bad;

    // Wrong passwords from one address wait longer each time, up to the ceiling;
    // another address is not affected; a success clears the count.
    auto d1 = auth.check(basic("orvadmin:wrong"), "10.0.0.2").delay;
    auto d2 = auth.check(basic("orvadmin:wrong"), "10.0.0.2").delay;
    auto d3 = auth.check(basic("nobody:wrong"), "10.0.0.2").delay;
    EXPECT_EQ(d1, Authenticator::firstDelay);
    EXPECT_EQ(d2, 2 * Authenticator::firstDelay);
    EXPECT_EQ(d3, 4 * Authenticator::firstDelay);
    for (int i = 0; i < 20; ++i)
        EXPECT_LE(auth.check(basic("orvadmin:wrong"), "10.0.0.2").delay, Authenticator::maxDelay);
    EXPECT_EQ(auth.check(basic("orvadmin:wrong"), "10.0.0.3").delay, Authenticator::firstDelay);
    EXPECT_TRUE(auth.check(basic("orvadmin:pass:with:colons"), "10.0.0.2").authenticated);
    EXPECT_EQ(auth.check(basic("orvadmin:wrong"), "10.0.0.2").delay, Authenticator::firstDelay);

    EXPECT_EQ(Authenticator::challenge("host\"x"), "Basic realm=\"hostx\"");

    Authenticator open(users, false);
    EXPECT_TRUE(open.check("", "10.0.0.1").authenticated);
}
