// Repository figures: creates in one transaction (with the size of the
// database and of its WAL per stored instance), get, enumeration,
// associators, reference lookups on a heavily referenced object and on one
// object in repositories of two sizes (the lookup time should not grow with
// the size), and a commit.

#include <benchmark/benchmark.h>

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Repository/Repository.h>
#include <Pegasus/Schema/SchemaManager.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <sys/stat.h>
#include <thread>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

using namespace Pegasus;

namespace {

const char* MOF = R"(
[Abstract] class B_Managed { string Caption; };
class B_Volume : B_Managed
{
    [Key] string SystemName;
    [Key] string DeviceID;
    uint64 BlockSize;
    uint64 NumberOfBlocks;
    string ElementName;
    uint16 OperationalStatus[];
};
class B_Pool : B_Managed { [Key] string InstanceID; uint64 TotalManagedSpace; };
[Association] class B_AllocatedFrom
{
    [Key] B_Pool REF Antecedent;
    [Key] B_Volume REF Dependent;
    uint64 SpaceConsumed;
};
)";

const CIMNamespaceName NS("root/orv");

SchemaManager& schema()
{
    static SchemaManager* s = [] {
        SchemaManager* m = new SchemaManager();
        m->loadString(MOF, "bench.mof", "root/orv");
        return m;
    }();
    return *s;
}

long long fileBytes(const std::string& path)
{
    struct stat st;
    return ::stat(path.c_str(), &st) == 0 ? static_cast<long long>(st.st_size) : 0;
}

class TempRepository {
public:
    TempRepository()
    {
        char pattern[] = "/tmp/benchrepoXXXXXX";
        if (!mkdtemp(pattern))
            throw std::runtime_error("mkdtemp failed");
        dir = pattern;
        repo.reset(new Repository(dir, schema()));
    }
    ~TempRepository()
    {
        repo.reset();
        std::filesystem::remove_all(dir);
    }
    std::string dir;
    std::unique_ptr<Repository> repo;
};

CIMInstance volume(int i)
{
    CIMInstance v{CIMName("B_Volume")};
    v.addProperty(CIMProperty(CIMName("SystemName"), CIMValue(String("ORV-ARRAY-0001"))));
    v.addProperty(CIMProperty(CIMName("DeviceID"), CIMValue(String(("LUN" + std::to_string(i)).c_str()))));
    v.addProperty(CIMProperty(CIMName("BlockSize"), CIMValue(Uint64(512))));
    v.addProperty(CIMProperty(CIMName("NumberOfBlocks"), CIMValue(Uint64(2097152 + i))));
    v.addProperty(CIMProperty(CIMName("ElementName"), CIMValue(String(("Volume " + std::to_string(i)).c_str()))));
    Array<Uint16> status;
    status.append(2);
    v.addProperty(CIMProperty(CIMName("OperationalStatus"), CIMValue(status)));
    return v;
}

CIMObjectPath poolPath(int i)
{
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("InstanceID"), String(("POOL" + std::to_string(i)).c_str()), CIMKeyBinding::STRING));
    return CIMObjectPath(String("array01"), NS, CIMName("B_Pool"), keys);
}

void createPool(Repository& repo, int i)
{
    CIMInstance p{CIMName("B_Pool")};
    p.addProperty(CIMProperty(CIMName("InstanceID"), CIMValue(String(("POOL" + std::to_string(i)).c_str()))));
    p.addProperty(CIMProperty(CIMName("TotalManagedSpace"), CIMValue(Uint64(1) << 40)));
    repo.createInstance(NS, p);
}

// Volume i and its allocation from pool (i % pools): two instances.
void createVolumeAndLink(Repository& repo, int i, int pools)
{
    CIMObjectPath v = repo.createInstance(NS, volume(i));
    v.setHost("array01");
    v.setNameSpace(NS);
    CIMInstance a{CIMName("B_AllocatedFrom")};
    a.addProperty(CIMProperty(CIMName("Antecedent"), CIMValue(poolPath(i % pools))));
    a.addProperty(CIMProperty(CIMName("Dependent"), CIMValue(v)));
    a.addProperty(CIMProperty(CIMName("SpaceConsumed"), CIMValue(Uint64(1) << 30)));
    repo.createInstance(NS, a);
}

// `count` volumes alone, committed in one transaction.
void fillVolumes(Repository& repo, int count)
{
    repo.beginTransaction(NS);
    for (int i = 0; i < count; ++i)
        repo.createInstance(NS, volume(i));
    repo.commitTransaction();
}

// `pools` pools and `volumes` volumes, each allocated from pool (i % pools),
// committed in one transaction.
void fillPoolsAndVolumes(Repository& repo, int pools, int volumes)
{
    repo.beginTransaction(NS);
    for (int p = 0; p < pools; ++p)
        createPool(repo, p);
    for (int i = 0; i < volumes; ++i)
        createVolumeAndLink(repo, i, pools);
    repo.commitTransaction();
}

void BM_CreateInTransaction(benchmark::State& state)
{
    const int objects = 50000; // volumes; as many associations
    double commitSeconds = 0;
    long long walBeforeCommit = 0, dbAfter = 0, walAfter = 0;
    for (auto _ : state) {
        TempRepository t;
        std::string file = t.repo->databaseFile(NS);
        auto start = std::chrono::steady_clock::now();
        t.repo->beginTransaction(NS);
        createPool(*t.repo, 0);
        for (int i = 0; i < objects - 1; ++i)
            createVolumeAndLink(*t.repo, i, 1);
        auto commitStart = std::chrono::steady_clock::now();
        walBeforeCommit = fileBytes(file + "-wal");
        t.repo->commitTransaction();
        auto end = std::chrono::steady_clock::now();
        commitSeconds += std::chrono::duration<double>(end - commitStart).count();
        state.SetIterationTime(std::chrono::duration<double>(end - start).count());
        // The checkpoint runs on the repository's own thread after the commit.
        state.PauseTiming();
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        dbAfter = fileBytes(file);
        walAfter = fileBytes(file + "-wal");
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * (2 * objects - 1));
    state.counters["commit_ms"] = benchmark::Counter(1000 * commitSeconds / state.iterations());
    state.counters["db_MB"] = dbAfter / 1048576.0;
    state.counters["db_bytes_per_instance"] = double(dbAfter) / (2 * objects - 1);
    state.counters["wal_at_commit_MB"] = walBeforeCommit / 1048576.0;
    state.counters["wal_after_MB"] = walAfter / 1048576.0;
}
BENCHMARK(BM_CreateInTransaction)->Unit(benchmark::kMillisecond)->Iterations(2)->UseManualTime();

void BM_EnumerateInstances(benchmark::State& state)
{
    TempRepository t;
    fillVolumes(*t.repo, 10000);
    for (auto _ : state) {
        Array<CIMInstance> all = t.repo->enumerateInstances(NS, CIMName("B_Managed"), true, false,
            false, CIMPropertyList(), RepositoryAccess::Committed);
        if (all.size() != 10000)
            state.SkipWithError("wrong count");
        benchmark::DoNotOptimize(all);
    }
    state.SetItemsProcessed(state.iterations() * 10000);
}
BENCHMARK(BM_EnumerateInstances)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_GetInstance(benchmark::State& state)
{
    TempRepository t;
    fillVolumes(*t.repo, 10000);
    std::vector<CIMObjectPath> paths;
    for (int i = 0; i < 10000; i += 37)
        paths.push_back(CIMObjectPath(("B_Volume.SystemName=\"ORV-ARRAY-0001\",DeviceID=\"LUN" +
            std::to_string(i) + "\"").c_str()));
    size_t next = 0;
    for (auto _ : state) {
        CIMInstance got = t.repo->getInstance(NS, paths[next++ % paths.size()], false, false,
            CIMPropertyList(), RepositoryAccess::Committed);
        benchmark::DoNotOptimize(got);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_GetInstance)->Unit(benchmark::kMicrosecond)->UseRealTime();

// The volumes of one pool (10 of 20000 instances), and the pool of one volume.
void BM_Associators(benchmark::State& state)
{
    const int pools = 1000;
    TempRepository t;
    fillPoolsAndVolumes(*t.repo, pools, pools * 10);
    CIMObjectPath pool = poolPath(pools / 2);
    CIMObjectPath volume("B_Volume.SystemName=\"ORV-ARRAY-0001\",DeviceID=\"LUN4321\"");
    for (auto _ : state) {
        Array<CIMObject> volumes = t.repo->associators(NS, pool, CIMName(), CIMName(), String(),
            String(), false, false, CIMPropertyList(), RepositoryAccess::Committed);
        Array<CIMObject> owner = t.repo->associators(NS, volume, CIMName("B_AllocatedFrom"),
            CIMName("B_Pool"), String(), String(), false, false, CIMPropertyList(),
            RepositoryAccess::Committed);
        if (volumes.size() != 10 || owner.size() != 1)
            state.SkipWithError("wrong count");
        benchmark::DoNotOptimize(volumes);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_Associators)->Unit(benchmark::kMicrosecond)->UseRealTime();

void BM_EnumerateInstanceNames(benchmark::State& state)
{
    TempRepository t;
    fillVolumes(*t.repo, 10000);
    for (auto _ : state) {
        Array<CIMObjectPath> all = t.repo->enumerateInstanceNames(NS, CIMName("B_Volume"),
            RepositoryAccess::Committed);
        if (all.size() != 10000)
            state.SkipWithError("wrong count");
        benchmark::DoNotOptimize(all);
    }
    state.SetItemsProcessed(state.iterations() * 10000);
}
BENCHMARK(BM_EnumerateInstanceNames)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_ReferenceNamesOf10000(benchmark::State& state)
{
    TempRepository t;
    fillPoolsAndVolumes(*t.repo, 1, 10000);
    for (auto _ : state) {
        Array<CIMObjectPath> refs = t.repo->referenceNames(NS, poolPath(0), CIMName(), String(),
            RepositoryAccess::Committed);
        if (refs.size() != 10000)
            state.SkipWithError("wrong count");
        benchmark::DoNotOptimize(refs);
    }
    state.SetItemsProcessed(state.iterations() * 10000);
}
BENCHMARK(BM_ReferenceNamesOf10000)->Unit(benchmark::kMillisecond)->UseRealTime();

// One pool with 10 volumes among range(0) instances in all: the time per
// lookup should stay the same when the repository is ten times larger.
void BM_ReferenceNamesBySize(benchmark::State& state)
{
    const int total = int(state.range(0));
    const int pools = total / 20; // 10 volumes and 10 links per pool
    TempRepository t;
    fillPoolsAndVolumes(*t.repo, pools, pools * 10);
    CIMObjectPath target = poolPath(pools / 2);
    for (auto _ : state) {
        Array<CIMObjectPath> refs = t.repo->referenceNames(NS, target, CIMName(), String(),
            RepositoryAccess::Committed);
        if (refs.size() != 10)
            state.SkipWithError("wrong count");
        benchmark::DoNotOptimize(refs);
    }
    state.SetItemsProcessed(state.iterations());
    state.counters["instances"] = total;
}
BENCHMARK(BM_ReferenceNamesBySize)->Arg(20000)->Arg(200000)->Unit(benchmark::kMicrosecond)->UseRealTime();

} // namespace

BENCHMARK_MAIN();
