// Delivery to one listener: order, retries while it is away, the bound
// when it never returns, refusals, and the destination URL forms.

#include "TestListener.h"

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Indication/IndicationDestinationQueue.h>

#include <gtest/gtest.h>

#include <stdexcept>

using namespace Pegasus;

namespace {

CIMInstance alert(Uint32 n) {
    CIMInstance a("CIM_AlertIndication");
    a.addProperty(CIMProperty("AlertType", CIMValue(Uint16(5))));
    a.addProperty(CIMProperty("Description", String::fromUtf8("alert " + std::to_string(n) + " <&>")));
    a.addProperty(CIMProperty("EventID", String::fromUtf8(std::to_string(n))));
    return a;
}

std::string stringOf(const CIMInstance& instance, const char* name) {
    const Uint32 index = instance.findProperty(name);
    if (index == PEG_NOT_FOUND) return "<missing>";
    return instance.getProperty(index).getValue().toString().toUtf8();
}

std::vector<std::string> eventIds(const std::vector<CIMInstance>& received) {
    std::vector<std::string> out;
    for (const CIMInstance& i : received) out.push_back(stringOf(i, "EventID"));
    return out;
}

std::vector<std::string> expectedIds(Uint32 from, Uint32 to) {
    std::vector<std::string> out;
    for (Uint32 n = from; n < to; ++n) out.push_back(std::to_string(n));
    return out;
}

IndicationDestinationQueue::Options fastRetries() {
    IndicationDestinationQueue::Options options;
    options.retryInterval = std::chrono::milliseconds(20);
    options.maxRetryInterval = std::chrono::milliseconds(100);
    options.connectTimeout = std::chrono::milliseconds(1000);
    options.readTimeout = std::chrono::milliseconds(5000);
    return options;
}

TEST(ListenerUrlTest, AcceptsTheUsualFormsAndRefusesTheRest) {
    ListenerUrl u = ListenerUrl::parse("http://listener.example.com:6000/cimlistener/x");
    EXPECT_EQ(u.scheme, "http");
    EXPECT_EQ(u.host, "listener.example.com");
    EXPECT_EQ(u.port, 6000);
    EXPECT_EQ(u.path, "/cimlistener/x");
    EXPECT_EQ(u.origin(), "http://listener.example.com:6000");

    u = ListenerUrl::parse("HTTPS://10.0.0.1");
    EXPECT_EQ(u.scheme, "https");
    EXPECT_EQ(u.port, 5989);
    EXPECT_EQ(u.path, "/");
    EXPECT_EQ(ListenerUrl::parse("http://h").port, 5988);

    u = ListenerUrl::parse("http://[::1]:7000");
    EXPECT_EQ(u.host, "::1");
    EXPECT_EQ(u.origin(), "http://[::1]:7000");

    for (const char* bad : {"", "listener:5988", "ftp://h/", "http://", "http://:80/", "http://h:/",
                            "http://h:0", "http://h:65536", "http://h:12a", "http://user@h/", "http://h h/",
                            "http://h/a b", "http://[::1/", "http://[zz]:1", "http://h;rm -rf/"}) {
        SCOPED_TRACE(bad);
        EXPECT_THROW(ListenerUrl::parse(bad), std::invalid_argument);
    }
}

TEST(IndicationDestinationQueueTest, DeliversInOrderWithExportHeadersAndSequenceNumbers) {
    TestListener listener;
    IndicationDestinationQueue queue(listener.url("/indications"), fastRetries());
    for (Uint32 n = 0; n < 50; ++n) queue.enqueue(alert(n));
    ASSERT_TRUE(queue.waitIdle(std::chrono::seconds(20)));
    const std::vector<CIMInstance> got = listener.received();
    EXPECT_EQ(eventIds(got), expectedIds(0, 50));
    // The markup-significant characters survived the round trip.
    EXPECT_EQ(stringOf(got[3], "Description"), "alert 3 <&>");
    for (std::size_t i = 0; i < got.size(); ++i) EXPECT_EQ(stringOf(got[i], "SequenceNumber"), std::to_string(i));
    EXPECT_EQ(stringOf(got[0], "SequenceContext"), stringOf(got[49], "SequenceContext"));
    const httplib::Headers headers = listener.lastHeaders();
    ASSERT_EQ(headers.count("CIMExport"), 1u);
    EXPECT_EQ(headers.find("CIMExport")->second, "MethodRequest");
    EXPECT_EQ(headers.find("CIMExportMethod")->second, "ExportIndication");
    EXPECT_EQ(queue.delivered(), 50u);
    EXPECT_EQ(queue.dropped(), 0u);
}

TEST(IndicationDestinationQueueTest, AListenerDownForAWhileGetsEverythingAfterItReturnsInOrder) {
    const int port = TestListener::freePort();
    IndicationDestinationQueue queue("http://127.0.0.1:" + std::to_string(port) + "/", fastRetries());
    for (Uint32 n = 0; n < 20; ++n) queue.enqueue(alert(n));
    std::this_thread::sleep_for(std::chrono::milliseconds(300));   // several failed attempts
    EXPECT_EQ(queue.pending(), 20u);
    EXPECT_EQ(queue.delivered(), 0u);

    TestListener listener(port);
    for (Uint32 n = 20; n < 30; ++n) queue.enqueue(alert(n));
    ASSERT_TRUE(queue.waitIdle(std::chrono::seconds(20)));
    EXPECT_EQ(eventIds(listener.received()), expectedIds(0, 30));
    EXPECT_EQ(queue.dropped(), 0u);

    // Gone again, and back again: the connection kept alive is re-made.
    listener.stop();
    for (Uint32 n = 30; n < 35; ++n) queue.enqueue(alert(n));
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    TestListener again(port);
    ASSERT_TRUE(queue.waitIdle(std::chrono::seconds(20)));
    EXPECT_EQ(eventIds(again.received()), expectedIds(30, 35));
}

TEST(IndicationDestinationQueueTest, AListenerThatNeverReturnsCostsABoundedQueue) {
    IndicationDestinationQueue::Options options = fastRetries();
    options.maxQueued = 100;
    const int port = TestListener::freePort();
    {
        IndicationDestinationQueue queue("http://127.0.0.1:" + std::to_string(port) + "/", options);
        for (Uint32 n = 0; n < 5000; ++n) {
            queue.enqueue(alert(n));
            ASSERT_LE(queue.pending(), 100u);
        }
        EXPECT_EQ(queue.pending(), 100u);
        EXPECT_EQ(queue.dropped(), 4900u);
        EXPECT_FALSE(queue.waitIdle(std::chrono::milliseconds(100)));

        // When it finally comes back it gets the newest ones, in order.
        TestListener late(port);
        ASSERT_TRUE(queue.waitIdle(std::chrono::seconds(20)));
        EXPECT_EQ(eventIds(late.received()), expectedIds(4900, 5000));
    }
    // Ending a queue whose listener is away does not wait for it.
    const auto begin = std::chrono::steady_clock::now();
    {
        IndicationDestinationQueue queue("http://127.0.0.1:" + std::to_string(port) + "/", options);
        queue.enqueue(alert(1));
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
}

TEST(IndicationDestinationQueueTest, RefusedIndicationsAreDroppedAfterTheirAttemptsAndTheRestGoOn) {
    TestListener listener;
    IndicationDestinationQueue::Options options = fastRetries();
    options.maxAttempts = 3;
    IndicationDestinationQueue queue(listener.url(), options);

    listener.refuseWith(403);
    queue.enqueue(alert(0));
    queue.enqueue(alert(1));
    ASSERT_TRUE(queue.waitIdle(std::chrono::seconds(20)));
    EXPECT_EQ(queue.dropped(), 2u);
    EXPECT_EQ(listener.requests(), 6);

    // An ERROR in the reply counts as a refusal too.
    listener.refuseWith(0);
    listener.answerError(true);
    queue.enqueue(alert(2));
    ASSERT_TRUE(queue.waitIdle(std::chrono::seconds(20)));
    EXPECT_EQ(queue.dropped(), 3u);

    listener.answerError(false);
    queue.enqueue(alert(3));
    ASSERT_TRUE(queue.waitIdle(std::chrono::seconds(20)));
    EXPECT_EQ(queue.delivered(), 1u);
    EXPECT_EQ(eventIds(listener.received()).back(), "3");
}

TEST(IndicationDestinationQueueTest, ServerErrorsAreRetriedUntilAccepted) {
    TestListener listener;
    IndicationDestinationQueue queue(listener.url(), fastRetries());
    listener.refuseWith(503);
    for (Uint32 n = 0; n < 3; ++n) queue.enqueue(alert(n));
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_GT(listener.requests(), 3);   // more attempts than a refusal would get
    listener.refuseWith(0);
    ASSERT_TRUE(queue.waitIdle(std::chrono::seconds(20)));
    EXPECT_EQ(eventIds(listener.received()), expectedIds(0, 3));
    EXPECT_EQ(queue.dropped(), 0u);
}

} // namespace
