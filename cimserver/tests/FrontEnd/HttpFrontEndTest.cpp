#include <Pegasus/FrontEnd/HttpFrontEnd.h>
#include <Pegasus/Security/UserFile.h>

#include <httplib.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include <sys/socket.h>
#include <netinet/in.h>
#include <arpa/inet.h>
#include <unistd.h>

using namespace Pegasus;

namespace {

// About `megabytes` MB of text, every line numbered so that a piece lost,
// doubled or out of order shows.
std::string largeText(int megabytes, char fill)
{
    std::string out;
    for (int line = 0; out.size() < size_t(megabytes) * 1024 * 1024 + 17; ++line)
        out += std::to_string(line) + ":" + std::string(60, fill) + "\n";
    return out;
}

class HttpFrontEndTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/frontend-XXXXXX";
        dir = mkdtemp(pattern);
        users = std::make_unique<UserFile>(dir + "/passwd");
        users->addUser("alice", "secret-1");
        cert = dir + "/server.pem";
        key = dir + "/key.pem";
        const std::string cmd = "openssl req -x509 -newkey rsa:2048 -nodes -days 1 -subj /CN=localhost -keyout " +
                                key + " -out " + cert + " >/dev/null 2>&1";
        ASSERT_EQ(0, std::system(cmd.c_str()));
    }
    void TearDown() override
    {
        frontEnd.reset();
        std::system(("rm -rf " + dir).c_str());
    }

    void startWith(bool authentication, size_t maxBody = HttpFrontEnd::defaultMaxBodyBytes)
    {
        authenticator = std::make_unique<Authenticator>(*users, authentication);
        HttpFrontEnd::Options options;
        options.httpPort = 0;
        options.httpsPort = 0;
        options.loopbackOnly = true;
        options.certificateFile = cert;
        options.keyFile = key;
        options.realm = "testhost";
        options.maxBodyBytes = maxBody;
        frontEnd = std::make_unique<HttpFrontEnd>(options, *authenticator, [this](const HttpFrontEnd::Request& r) {
            ++calls;
            HttpFrontEnd::Response response;
            response.headers.emplace_back("CIMOperation", "MethodResponse");
            if (r.body == "large" || r.body == "pieces")
            {
                // Answers sent from the handler's own text.
                response.body = largeText(r.body == "large" ? 3 : 1, 'z');
                if (r.body == "pieces")
                    response.bodyParts = {largeText(1, 'a'), std::string(), largeText(2, 'b')};
                return response;
            }
            response.body = "user=" + r.user + " op=" + (r.headers.count("cimoperation") ? r.headers.at("cimoperation") : "") +
                            " secure=" + (r.secure ? "1" : "0") + " body=" + r.body;
            return response;
        });
        frontEnd->start();
    }

    std::string dir, cert, key;
    std::unique_ptr<UserFile> users;
    std::unique_ptr<Authenticator> authenticator;
    std::unique_ptr<HttpFrontEnd> frontEnd;
    std::atomic<int> calls{0};
};

std::string rawExchange(int port, const std::string& request, bool waitForReply = true)
{
    int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_port = htons(static_cast<uint16_t>(port));
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0)
    {
        ::close(fd);
        return "";
    }
    (void)::write(fd, request.data(), request.size());
    std::string reply;
    if (!waitForReply)
    {
        ::close(fd);
        return reply;
    }
    char buffer[4096];
    ssize_t n;
    while ((n = ::read(fd, buffer, sizeof buffer)) > 0)
    {
        reply.append(buffer, static_cast<size_t>(n));
        if (reply.find("\r\n\r\n") != std::string::npos)
            break;
    }
    ::close(fd);
    return reply;
}

} // namespace

TEST_F(HttpFrontEndTest, CredentialsAreCheckedBeforeTheHandler)
{
    startWith(true);
    httplib::Client client("127.0.0.1", frontEnd->httpPort());
    httplib::Headers cim = {{"CIMOperation", "MethodCall"}};
    auto missing = client.Post("/cimom", cim, "<x/>", "application/xml");
    ASSERT_TRUE(missing);
    EXPECT_EQ(401, missing->status);
    EXPECT_EQ("Basic realm=\"testhost\"", missing->get_header_value("WWW-Authenticate"));
    client.set_basic_auth("alice", "wrong");
    auto wrong = client.Post("/cimom", cim, "<x/>", "application/xml");
    ASSERT_TRUE(wrong);
    EXPECT_EQ(401, wrong->status);
    EXPECT_EQ(0, calls.load());
    client.set_basic_auth("alice", "secret-1");
    auto good = client.Post("/cimom", cim, "<x/>", "application/xml");
    ASSERT_TRUE(good);
    EXPECT_EQ(200, good->status);
    EXPECT_EQ("user=alice op=MethodCall secure=0 body=<x/>", good->body);
    EXPECT_EQ("MethodResponse", good->get_header_value("CIMOperation"));
}

TEST_F(HttpFrontEndTest, LargeAnswersGoOutWholeWithTheirLengthOverBothProtocols)
{
    startWith(false);
    const std::string pieces = largeText(1, 'a') + largeText(2, 'b') + largeText(1, 'z');
    httplib::Client plain("127.0.0.1", frontEnd->httpPort());
    httplib::SSLClient secure("127.0.0.1", frontEnd->httpsPort());
    secure.enable_server_certificate_verification(false);
    const httplib::Headers cim = {{"CIMOperation", "MethodCall"}};
    auto check = [&](httplib::Result reply, const std::string& expected) {
        ASSERT_TRUE(reply);
        EXPECT_EQ(200, reply->status);
        EXPECT_EQ(std::to_string(expected.size()), reply->get_header_value("Content-Length"));
        EXPECT_FALSE(reply->has_header("Transfer-Encoding"));
        EXPECT_EQ("MethodResponse", reply->get_header_value("CIMOperation"));
        EXPECT_TRUE(reply->body == expected) << "got " << reply->body.size() << " bytes, expected " << expected.size();
    };
    // Twice on each kept-alive connection, then a small answer after them.
    for (int round = 0; round < 2; ++round)
    {
        check(plain.Post("/cimom", cim, "pieces", "application/xml"), pieces);
        check(plain.Post("/cimom", cim, "large", "application/xml"), largeText(3, 'z'));
        check(secure.Post("/cimom", cim, "pieces", "application/xml"), pieces);
    }
    auto small = plain.Post("/cimom", cim, "b", "application/xml");
    ASSERT_TRUE(small);
    EXPECT_EQ("user= op=MethodCall secure=0 body=b", small->body);
}

TEST_F(HttpFrontEndTest, HttpsServesTheSameWithoutAuthenticationWhenOff)
{
    startWith(false);
    httplib::SSLClient client("127.0.0.1", frontEnd->httpsPort());
    client.enable_server_certificate_verification(false);
    auto reply = client.Post("/cimom", httplib::Headers{{"CIMOperation", "MethodCall"}}, "b", "application/xml");
    ASSERT_TRUE(reply);
    EXPECT_EQ(200, reply->status);
    EXPECT_EQ("user= op=MethodCall secure=1 body=b", reply->body);
}

TEST_F(HttpFrontEndTest, RefusalsOfTheHttpLayer)
{
    startWith(false, 1024);
    httplib::Client client("127.0.0.1", frontEnd->httpPort());
    auto big = client.Post("/cimom", std::string(4096, 'x'), "application/xml");
    ASSERT_TRUE(big);
    EXPECT_EQ(413, big->status);
    auto get = client.Get("/cimom");
    ASSERT_TRUE(get);
    EXPECT_EQ(405, get->status);
    const std::string mpost = rawExchange(frontEnd->httpPort(),
        "M-POST /cimom HTTP/1.1\r\nHost: x\r\nMan: http://www.dmtf.org/cim/mapping/http/v1.0; ns=73\r\n"
        "73-CIMOperation: MethodCall\r\nContent-Length: 3\r\n\r\nabc");
    EXPECT_EQ(0u, mpost.find("HTTP/1.1 501")) << mpost;
    // A client that goes away in the middle of its request harms nothing.
    rawExchange(frontEnd->httpPort(), "POST /cimom HTTP/1.1\r\nHost: x\r\nContent-Length: 100\r\n\r\nabc", false);
    EXPECT_EQ(0, calls.load());
    auto after = client.Post("/cimom", "ok", "application/xml");
    ASSERT_TRUE(after);
    EXPECT_EQ(200, after->status);
}

TEST_F(HttpFrontEndTest, ThirtyTwoClientsAtOnce)
{
    startWith(true);
    std::vector<std::thread> clients;
    std::atomic<int> ok{0};
    for (int i = 0; i < 32; ++i)
    {
        clients.emplace_back([&, i] {
            httplib::Client client("127.0.0.1", frontEnd->httpPort());
            client.set_basic_auth("alice", "secret-1");
            for (int k = 0; k < 5; ++k)
            {
                auto r = client.Post("/cimom", std::to_string(i), "application/xml");
                if (r && r->status == 200 && r->body.find("body=" + std::to_string(i)) != std::string::npos)
                    ++ok;
                else
                    ADD_FAILURE() << "client " << i << ": " << (r ? std::to_string(r->status) : httplib::to_string(r.error()));
            }
        });
    }
    for (auto& t : clients)
        t.join();
    EXPECT_EQ(160, ok.load());
}

TEST_F(HttpFrontEndTest, BrokenCertificateIsAClearError)
{
    authenticator = std::make_unique<Authenticator>(*users, true);
    HttpFrontEnd::Options options;
    options.httpPort = 0;
    options.httpsPort = 0;
    options.loopbackOnly = true;
    options.certificateFile = dir + "/missing.pem";
    options.keyFile = key;
    HttpFrontEnd broken(options, *authenticator, [](const HttpFrontEnd::Request&) { return HttpFrontEnd::Response(); });
    try
    {
        broken.start();
        FAIL() << "started with a missing certificate";
    }
    catch (const std::runtime_error& e)
    {
        EXPECT_NE(std::string::npos, std::string(e.what()).find("missing.pem"));
    }
}
