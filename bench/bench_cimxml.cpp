// CIM-XML codec figures: encoding an EnumerateInstances response of 10,000
// volume-like instances (the front end's target is under 0.5 s server time),
// and decoding such a response as a client would.

#include <benchmark/benchmark.h>

#include <Pegasus/CIMXml/CIMXmlReader.h>
#include <Pegasus/CIMXml/CIMXmlWriter.h>
#include <Pegasus/Common/CIMDateTime.h>

#include <iostream>
#include <string>

using namespace Pegasus;

namespace {

const Uint32 kInstances = 10000;

Array<CIMInstance> makeInstances()
{
    Array<CIMInstance> out;
    for (Uint32 i = 0; i < kInstances; ++i)
    {
        const String id = String::fromUtf8("vol-" + std::to_string(i));
        CIMInstance v("ORV_StorageVolume");
        v.addProperty(CIMProperty("SystemName", CIMValue(String("array1"))));
        v.addProperty(CIMProperty("DeviceID", CIMValue(id)));
        v.addProperty(CIMProperty("ElementName", CIMValue(String::fromUtf8("Volume <" + std::to_string(i) + "> & co"))));
        v.addProperty(CIMProperty("BlockSize", CIMValue(Uint64(512))));
        v.addProperty(CIMProperty("NumberOfBlocks", CIMValue(Uint64(2097152) + i)));
        v.addProperty(CIMProperty("Primordial", CIMValue(Boolean(false))));
        Array<Uint16> status;
        status.append(2);
        status.append(32768);
        v.addProperty(CIMProperty("OperationalStatus", CIMValue(status)));
        v.addProperty(CIMProperty("InstallDate", CIMValue(CIMDateTime("20260101120000.000000+000"))));
        v.addProperty(CIMProperty("Description", CIMValue(CIMTYPE_STRING, false)));
        Array<CIMKeyBinding> keys;
        keys.append(CIMKeyBinding("SystemName", "array1", CIMKeyBinding::STRING));
        keys.append(CIMKeyBinding("DeviceID", id, CIMKeyBinding::STRING));
        v.setPath(CIMObjectPath("", CIMNamespaceName(), "ORV_StorageVolume", keys));
        out.append(v);
    }
    return out;
}

std::string encode(const Array<CIMInstance>& instances)
{
    std::string body;
    body.reserve(instances.size() * 1024);
    CIMXmlWriter::InstanceOptions options;
    for (Uint32 i = 0; i < instances.size(); ++i)
        CIMXmlWriter::appendValueNamedInstance(body, instances[i], options);
    return CIMXmlWriter::formatIMethodResponse("1", "EnumerateInstances", body, true);
}

void BM_EncodeEnumerateInstances(benchmark::State& state)
{
    const Array<CIMInstance> instances = makeInstances();
    size_t bytes = 0;
    for (auto _ : state)
    {
        std::string doc = encode(instances);
        bytes = doc.size();
        benchmark::DoNotOptimize(doc.data());
    }
    state.counters["instances"] = kInstances;
    state.counters["bytes"] = double(bytes);
    state.SetItemsProcessed(int64_t(state.iterations()) * kInstances);
}
BENCHMARK(BM_EncodeEnumerateInstances)->Unit(benchmark::kMillisecond);

void BM_DecodeEnumerateInstances(benchmark::State& state)
{
    const std::string doc = encode(makeInstances());
    Uint32 count = 0;
    for (auto _ : state)
    {
        CIMXmlReader reader(doc);
        const xmlNode* rv = CIMXmlReader::firstChild(reader.readMessage().body);
        count = 0;
        for (const xmlNode* n = CIMXmlReader::firstChild(rv); n; n = CIMXmlReader::nextSibling(n))
        {
            CIMInstance i = CIMXmlReader::readNamedInstance(n);
            benchmark::DoNotOptimize(i);
            ++count;
        }
    }
    if (count != kInstances)
        state.SkipWithError("decoded a different number of instances");
    state.counters["instances"] = count;
    state.counters["bytes"] = double(doc.size());
    state.SetItemsProcessed(int64_t(state.iterations()) * kInstances);
}
BENCHMARK(BM_DecodeEnumerateInstances)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
