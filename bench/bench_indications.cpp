// Indication delivery figures: indications per second from a destination
// queue to one CIM-XML listener on loopback (each one a full ExportIndication
// round trip, decoded by the listener), and the cost of matching a filter.

#include <benchmark/benchmark.h>

#include <Pegasus/CIMXml/CIMXmlReader.h>
#include <Pegasus/CIMXml/CIMXmlWriter.h>
#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Indication/IndicationDestinationQueue.h>
#include <Pegasus/Indication/WqlFilter.h>

#include <httplib.h>

#include <atomic>
#include <iostream>
#include <stdexcept>
#include <string>
#include <thread>

using namespace Pegasus;

namespace {

CIMInstance alert(Uint32 n) {
    CIMInstance a("CIM_AlertIndication");
    a.addProperty(CIMProperty("IndicationTime", CIMValue(CIMDateTime::getCurrentDateTime())));
    a.addProperty(CIMProperty("PerceivedSeverity", CIMValue(Uint16(5))));
    a.addProperty(CIMProperty("AlertType", CIMValue(Uint16(5))));
    a.addProperty(CIMProperty("AlertingElementFormat", CIMValue(Uint16(2))));
    a.addProperty(CIMProperty("ProbableCause", CIMValue(Uint16(33))));
    a.addProperty(CIMProperty("SystemCreationClassName", String("ORV_Storage_ComputerSystem")));
    a.addProperty(CIMProperty("ProviderName", String("ORVProvider")));
    a.addProperty(CIMProperty("SystemName", String("array1")));
    a.addProperty(CIMProperty("AlertingManagedElement",
        String::fromUtf8("root/orv:ORV_StoragePool.InstanceID=\"pool-" + std::to_string(n) + "\"")));
    a.addProperty(CIMProperty("Description", String("Capacity is over.")));
    a.addProperty(CIMProperty("OwningEntity", String("SNIA")));
    a.addProperty(CIMProperty("MessageID", String("DRM29")));
    return a;
}

CIMInstance creation() {
    CIMInstance v("ORV_StorageVolume");
    v.addProperty(CIMProperty("DeviceID", String("0001")));
    v.addProperty(CIMProperty("ElementName", String("vol1")));
    v.addProperty(CIMProperty("HealthState", CIMValue(Uint16(5))));
    CIMInstance c("CIM_InstCreation");
    c.addProperty(CIMProperty("SourceInstance", CIMValue(v)));
    return c;
}

class Listener {
public:
    Listener() {
        _server.set_tcp_nodelay(true);
        _server.Post(".*", [this](const httplib::Request& request, httplib::Response& response) {
            const CIMXmlReader::ExportIndication exported = CIMXmlReader::readExportIndication(request.body);
            ++_received;
            response.set_content(CIMXmlWriter::formatExportIndicationResponse(exported.messageId), "application/xml");
        });
        _port = _server.bind_to_any_port("127.0.0.1");
        if (_port <= 0) throw std::runtime_error("cannot bind the listener");
        _thread = std::thread([this] { _server.listen_after_bind(); });
    }
    ~Listener() {
        _server.stop();
        _thread.join();
    }
    std::string url() const { return "http://127.0.0.1:" + std::to_string(_port) + "/"; }
    std::uint64_t received() const { return _received; }

private:
    httplib::Server _server;
    int _port = 0;
    std::thread _thread;
    std::atomic<std::uint64_t> _received{0};
};

void BM_DeliverToOneListener(benchmark::State& state) {
    const Uint32 batch = static_cast<Uint32>(state.range(0));
    Listener listener;
    IndicationDestinationQueue::Options options;
    options.maxQueued = batch;
    IndicationDestinationQueue queue(listener.url(), options);
    std::uint64_t total = 0;
    for (auto _ : state) {
        for (Uint32 n = 0; n < batch; ++n) queue.enqueue(alert(n));
        if (!queue.waitIdle(std::chrono::seconds(60))) state.SkipWithError("the listener did not get everything");
        total += batch;
    }
    if (listener.received() != total || queue.dropped() != 0) state.SkipWithError("indications were lost");
    state.SetItemsProcessed(static_cast<std::int64_t>(total));
    state.counters["indications/s"] = benchmark::Counter(static_cast<double>(total), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_DeliverToOneListener)->Arg(1000)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_EnqueueWhileListenerIsAway(benchmark::State& state) {
    // What a provider's thread pays per indication when nothing is listening.
    IndicationDestinationQueue::Options options;
    options.maxQueued = 1000;
    IndicationDestinationQueue queue("http://127.0.0.1:9/", options);
    const CIMInstance indication = alert(1);
    for (auto _ : state) queue.enqueue(indication);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_EnqueueWhileListenerIsAway);

void BM_MatchFilter(benchmark::State& state) {
    const WqlFilter filter = WqlFilter::parse(
        "SELECT * FROM CIM_InstCreation WHERE SourceInstance ISA ORV_StorageVolume AND "
        "(SourceInstance.HealthState = 5 OR SourceInstance.ElementName = 'vol2') AND NOT SourceInstance.DeviceID IS NULL");
    const CIMInstance indication = creation();
    for (auto _ : state) benchmark::DoNotOptimize(filter.evaluate(indication));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_MatchFilter);

} // namespace

BENCHMARK_MAIN();
