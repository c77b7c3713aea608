// The module's load pipeline in process on the simulator's largest array,
// against the server's own repository: the view command and its parse,
// classification, dispatch to the models and the commit, each timed and with
// the peak resident size it reached. Three loads: the first (everything is
// new), one with no change, one with 1% of the records changed. After each
// load the namespace's database and its WAL are measured, and a sampler
// keeps the largest sizes they reached while the load ran (the module stops a
// load whose database passes its limit). Targets printed against: unchanged
// load 0.5 s, resident size 180 MB, database 42 MB.
//
// BENCH_LOAD_MAX_DB_MB raises the module's database limit for a measuring
// run on a repository that does not fit (the default is the shipped limit).
// BENCH_LOAD_KEEP=1 keeps the temporary root (its path is printed) to look
// into the database afterwards.

#include <benchmark/benchmark.h>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <list>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <Pegasus/Common/ResponseHandler.h>
#include <Pegasus/Provider/CIMOMHandle.h>
#include <Pegasus/Repository/Repository.h>
#include <Pegasus/Schema/SchemaManager.h>
#include <Pegasus/Server/OperationDispatcher.h>
#include <Pegasus/Server/ProviderManager.h>
#include <Pegasus/Server/ProviderRegistrationManager.h>
#include <Pegasus/Server/ServerCIMOMHandleRep.h>

#include "ClassifiedDataSet.h"
#include "CimHandle.h"
#include "Command.h"
#include "ConfigManager.h"
#include "DataFlow.h"
#include "DataflowSource.h"
#include "IndicationHandle.h"
#include "RawData.h"
#include "RawDataCenter.h"
#include "Singleton.h"
#include "SmisDataCenter.h"
#include "XMLParser.h"

using namespace orvsmis;

namespace {

const std::string kBin = TEST_BINARY_DIR;
const std::string kSource = TEST_SOURCE_DIR;
// The record types of the full view, in the order a load classifies them.
const std::vector<int> kViewTypes = {0, 1, 2, 3, 5, 6, 7};

long StatusKb(const char* field) {
    std::ifstream in("/proc/self/status");
    std::string line;
    const std::string prefix = std::string(field) + ":";
    while (std::getline(in, line))
        if (line.compare(0, prefix.size(), prefix) == 0) return std::strtol(line.c_str() + prefix.size(), nullptr, 10);
    return -1;
}

// Starts a new peak: the kernel sets the high-water mark back to the
// present resident size.
void ResetPeak() {
    std::ofstream out("/proc/self/clear_refs");
    out << "5";
}

const double kTargetUnchangedSeconds = 0.5;
const double kTargetResidentMB = 180;
const double kTargetDatabaseMB = 42;

long long FileBytes(const std::string& path) {
    struct stat st;
    return ::stat(path.c_str(), &st) == 0 ? static_cast<long long>(st.st_size) : 0;
}

// Samples the sizes of the database and its WAL while a load runs and keeps
// the largest of each.
class SizeSampler {
public:
    SizeSampler(const std::string& database) : m_database(database) {
        m_thread = std::thread([this] {
            while (!m_stop.load()) {
                Sample();
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            }
            Sample();
        });
    }
    ~SizeSampler() { Stop(); }
    void Stop() {
        if (m_thread.joinable()) {
            m_stop = true;
            m_thread.join();
        }
    }
    long long PeakDatabase() const { return m_peakDatabase.load(); }
    long long PeakWal() const { return m_peakWal.load(); }

private:
    void Sample() {
        const long long db = FileBytes(m_database);
        const long long wal = FileBytes(m_database + "-wal");
        if (db > m_peakDatabase.load()) m_peakDatabase = db;
        if (wal > m_peakWal.load()) m_peakWal = wal;
    }
    std::string m_database;
    std::atomic<bool> m_stop{false};
    std::atomic<long long> m_peakDatabase{0};
    std::atomic<long long> m_peakWal{0};
    std::thread m_thread;
};

int Shell(const std::string& line) { return std::system((line + " >/dev/null 2>&1").c_str()); }

long long FolderBytes(const std::string& dir) {
    FILE* pipe = ::popen(("du -sb '" + dir + "' 2>/dev/null").c_str(), "r");
    long long bytes = -1;
    if (pipe != nullptr) {
        if (std::fscanf(pipe, "%lld", &bytes) != 1) bytes = -1;
        ::pclose(pipe);
    }
    return bytes;
}

// The simulator's view tool, its output pushed into the parser as it comes,
// the way the command layer does it.
class SimulatorView : public QueryCommand {
public:
    explicit SimulatorView(XMLParser& parser) : QueryCommand(&parser) { m_commandLine = "Vexview -all"; }
    bool Execute() override {
        m_parser->Unload();
        FILE* pipe = ::popen(("_OUTFMTSET=xml '" + kBin + "/arraysim-bin/Vexview' -all 2>&1").c_str(), "r");
        if (pipe == nullptr) return false;
        char buffer[65536];
        size_t got;
        bool ok = true;
        while ((got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0)
            ok = m_parser->LoadChunk(buffer, static_cast<int>(got), 0) && ok;
        ::pclose(pipe);
        ok = m_parser->LoadChunk(buffer, 0, 1) && ok;
        return ok && m_parser->GetReturnCode();
    }
    void GetQueryDataType(std::vector<int>& types) override { types = kViewTypes; }
};

// Brackets a dispatch with the repository transaction, as the provider does,
// and times the commit.
class TransactionDelegate : public DataFlowDelegate {
public:
    bool BeforeReceiveAllData(EventArgs*) override {
        Singleton<CimHandle>::Instance()->beginTransaction(
            Pegasus::CIMNamespaceName(Singleton<ConfigManager>::Instance()->GetNamespace().c_str()));
        return true;
    }
    bool AfterReceiveAllData(EventArgs*) override {
        ResetPeak();
        const auto start = std::chrono::steady_clock::now();
        Singleton<CimHandle>::Instance()->commitTransaction();
        commitSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        commitPeakKb = StatusKb("VmHWM");
        Singleton<IndicationHandle>::Instance()->SetEnabled(true);
        return true;
    }
    bool BeforeReceiveDataPerType(EventArgs*) override { return true; }
    bool AfterReceiveDataPerType(EventArgs*) override { return true; }

    double commitSeconds = 0;
    long commitPeakKb = 0;
};

class CountingIndications : public Pegasus::IndicationResponseHandler {
public:
    void processing() override {}
    void complete() override {}
    void deliver(const Pegasus::CIMIndication&) override { ++count; }
    void deliver(const Pegasus::OperationContext&, const Pegasus::CIMIndication&) override { ++count; }
    long count = 0;
};

struct StageFigures {
    double seconds = 0;
    long peakKb = 0;
};

struct LoadFigures {
    StageFigures command, classify, dispatch, commit;
    long records = 0;
    long indications = 0;
    long long databaseBytes = 0;      // the repository folder after the load
    long long namespaceDbBytes = 0;   // root#orv.db after the load
    long long walBytes = 0;           // its WAL after the load
    long long peakNamespaceDbBytes = 0;
    long long peakWalBytes = 0;
    long residentKb = 0;
};

// A private root with the simulated array and the server's repository.
class Bench {
public:
    Bench() {
        char pattern[] = "/tmp/bench-load-XXXXXX";
        const char* made = ::mkdtemp(pattern);
        if (made == nullptr) throw std::runtime_error("mkdtemp failed");
        m_root = made;
        ::setenv("SMIS_ROOT", m_root.c_str(), 1);
        Shell("mkdir -p '" + m_root + "/opt/pegasus/etc' '" + m_root + "/opt/pegasus/repository' '" + m_root +
              "/var/run' '" + m_root + "/var/lib/arraysim'");
        Shell("cp '" + kSource + "/provider/etc/smis_provider.conf' '" + m_root + "/opt/pegasus/etc/'");
        if (const char* limit = std::getenv("BENCH_LOAD_MAX_DB_MB")) {
            const long mb = std::strtol(limit, nullptr, 10);
            if (mb <= 0) throw std::runtime_error("BENCH_LOAD_MAX_DB_MB must be a number of megabytes");
            Shell("sed -i 's/^MaxDbSize = .*/MaxDbSize = " + std::to_string(mb) + "/' '" + m_root +
                  "/opt/pegasus/etc/smis_provider.conf'");
        }
        if (Shell("'" + kBin + "/bin/arraysim' init --template max") != 0)
            throw std::runtime_error("arraysim init --template max failed (is arraysim built?)");
        if (!Singleton<ConfigManager>::Instance()->Initialize())
            throw std::runtime_error("the module configuration cannot be read");

        m_schema.loadDirectory(kSource + "/schema");
        m_repository.reset(new Pegasus::Repository(m_root + "/opt/pegasus/repository", m_schema));
        m_providers.reset(new ProviderManagerHolder());
        m_dispatcher.reset(new Pegasus::OperationDispatcher(m_schema, *m_repository, m_registration,
                                                            m_providers->manager));
        Pegasus::CIMOMHandle handle(
            std::make_shared<Pegasus::ServerCIMOMHandleRep>(*m_dispatcher, Pegasus::Caller::Provider));
        Singleton<CimHandle>::Instance()->Initialize(handle);
        Singleton<IndicationHandle>::Instance()->SetHandler(&m_indications);
        Singleton<IndicationHandle>::Instance()->SetEnabled(false);

        m_flow.reset(new DataFlow(&m_delegate, RawDataCenter::Instance(), SmisDataCenter::Instance()));
        m_source.reset(new DataflowStorageSource(m_flow.get(), false));
        m_view = new SimulatorView(m_source->GetParser());
        m_source->AddCommand(m_view);
        m_baselineKb = StatusKb("VmRSS");
    }
    ~Bench() {
        Singleton<IndicationHandle>::Instance()->SetHandler(nullptr);
        if (std::getenv("BENCH_LOAD_KEEP") != nullptr)
            std::cerr << "kept " << m_root << std::endl;
        else
            Shell("rm -rf '" + m_root + "'");
    }

    // Forgets everything loaded, as after a failed load.
    void Forget() {
        SmisDataCenter::Instance()->Destroy();
        RawDataCenter::Instance()->Destroy();
        Singleton<IndicationHandle>::Instance()->SetEnabled(false);
    }

    LoadFigures Load() {
        LoadFigures figures;
        const long indicationsBefore = m_indications.count;
        SizeSampler sampler(NamespaceDb());

        ResetPeak();
        auto start = std::chrono::steady_clock::now();
        if (!m_view->Execute()) throw std::runtime_error("the view command failed");
        figures.command = Stage(start);

        ResetPeak();
        start = std::chrono::steady_clock::now();
        ClassifiedDataSet set;
        m_flow->ClassifyRawData(*m_source, kViewTypes, set);
        figures.classify = Stage(start);
        for (int type : kViewTypes) {
            std::vector<RawData*> records;
            const int count = m_source->GetParser().QueryData(records, type);
            if (count > 0) figures.records += count;
            ReleaseRawDataList(records);
        }
        m_source->GetParser().Unload();

        ResetPeak();
        start = std::chrono::steady_clock::now();
        if (!m_flow->DispatchRawData(set, true)) throw std::runtime_error("the dispatch failed");
        figures.dispatch = Stage(start);
        // The commit runs inside the dispatch: its share is taken out.
        figures.commit.seconds = m_delegate.commitSeconds;
        figures.commit.peakKb = m_delegate.commitPeakKb;
        figures.dispatch.seconds -= m_delegate.commitSeconds;

        figures.indications = m_indications.count - indicationsBefore;
        // The checkpoint after a commit runs on the repository's own thread.
        std::this_thread::sleep_for(std::chrono::milliseconds(1500));
        sampler.Stop();
        figures.databaseBytes = FolderBytes(m_root + "/opt/pegasus/repository");
        figures.namespaceDbBytes = FileBytes(NamespaceDb());
        figures.walBytes = FileBytes(NamespaceDb() + "-wal");
        figures.peakNamespaceDbBytes = sampler.PeakDatabase();
        figures.peakWalBytes = sampler.PeakWal();
        figures.residentKb = StatusKb("VmRSS");
        return figures;
    }

    // Changes 1% of the records the view gives (at least one) at the
    // array's console: logical disks first, then physical disks, then
    // controllers, as far as the module reads them.
    int ChangeOnePercent() {
        if (!m_view->Execute()) throw std::runtime_error("the view command failed");
        long records = 0;
        for (int type : kViewTypes) {
            std::vector<RawData*> list;
            const int count = m_source->GetParser().QueryData(list, type);
            if (count > 0) records += count;
            ReleaseRawDataList(list);
        }
        struct Kind { int type; const char* console; };
        const Kind kinds[] = {{RAWDATA_LD, "ld"}, {RAWDATA_PD, "disk"}, {RAWDATA_DAC, "controller"}};
        const std::string state = m_failedNext ? "failure" : "ready";
        m_failedNext = !m_failedNext;
        long wanted = records / 100 > 0 ? records / 100 : 1;
        int changed = 0;
        for (const Kind& kind : kinds) {
            std::vector<RawData*> list;
            m_source->GetParser().QueryData(list, kind.type);
            for (size_t i = 0; i < list.size() && changed < wanted; ++i)
                if (Shell("'" + kBin + "/bin/arraysim' set " + kind.console + " '" + Safe(list[i]->name) +
                          "' --state " + state) == 0)
                    ++changed;
            ReleaseRawDataList(list);
        }
        m_source->GetParser().Unload();
        return changed;
    }

    long BaselineKb() const { return m_baselineKb; }
    std::string NamespaceDb() const { return m_root + "/opt/pegasus/repository/root#orv.db"; }

private:
    struct ProviderManagerHolder {
        ProviderManagerHolder() : manager("") {}
        Pegasus::ProviderManager manager;
    };

    // Record names come from the simulator; only the characters of its ids
    // may reach the shell line.
    static std::string Safe(const std::string& name) {
        for (char c : name)
            if (!std::isalnum(static_cast<unsigned char>(c)) && c != '-' && c != '_')
                throw std::runtime_error("unexpected record name " + name);
        return name;
    }

    static StageFigures Stage(std::chrono::steady_clock::time_point start) {
        StageFigures figures;
        figures.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        figures.peakKb = StatusKb("VmHWM");
        return figures;
    }

    std::string m_root;
    Pegasus::SchemaManager m_schema;
    std::unique_ptr<Pegasus::Repository> m_repository;
    Pegasus::ProviderRegistrationManager m_registration;
    std::unique_ptr<ProviderManagerHolder> m_providers;
    std::unique_ptr<Pegasus::OperationDispatcher> m_dispatcher;
    TransactionDelegate m_delegate;
    CountingIndications m_indications;
    std::unique_ptr<DataFlow> m_flow;
    std::unique_ptr<DataflowStorageSource> m_source;
    SimulatorView* m_view = nullptr;  // owned by m_source
    bool m_failedNext = true;
    long m_baselineKb = 0;
};

Bench& TheBench() {
    static Bench bench;
    return bench;
}

void Report(benchmark::State& state, const char* name, const LoadFigures& f) {
    state.counters["records"] = static_cast<double>(f.records);
    state.counters["cmd_parse_s"] = f.command.seconds;
    state.counters["classify_s"] = f.classify.seconds;
    state.counters["dispatch_s"] = f.dispatch.seconds;
    state.counters["commit_s"] = f.commit.seconds;
    state.counters["cmd_parse_peak_MB"] = f.command.peakKb / 1024.0;
    state.counters["classify_peak_MB"] = f.classify.peakKb / 1024.0;
    state.counters["dispatch_peak_MB"] = f.dispatch.peakKb / 1024.0;
    state.counters["commit_peak_MB"] = f.commit.peakKb / 1024.0;
    state.counters["rss_after_MB"] = f.residentKb / 1024.0;
    state.counters["rss_before_first_MB"] = TheBench().BaselineKb() / 1024.0;
    const double mb = 1024.0 * 1024.0;
    state.counters["repository_MB"] = static_cast<double>(f.databaseBytes) / mb;
    state.counters["db_MB"] = static_cast<double>(f.namespaceDbBytes) / mb;
    state.counters["wal_MB"] = static_cast<double>(f.walBytes) / mb;
    state.counters["db_peak_MB"] = static_cast<double>(f.peakNamespaceDbBytes) / mb;
    state.counters["wal_peak_MB"] = static_cast<double>(f.peakWalBytes) / mb;
    state.counters["indications"] = static_cast<double>(f.indications);

    std::ostringstream line;
    line << std::fixed << std::setprecision(3) << "  " << name << ": records " << f.records
         << " | command+parse " << f.command.seconds << " s, peak " << f.command.peakKb / 1024 << " MB"
         << " | classify " << f.classify.seconds << " s, peak " << f.classify.peakKb / 1024 << " MB"
         << " | dispatch " << f.dispatch.seconds << " s, peak " << f.dispatch.peakKb / 1024 << " MB"
         << " | commit " << f.commit.seconds << " s, peak " << f.commit.peakKb / 1024 << " MB"
         << " | resident after " << f.residentKb / 1024 << " MB | indications " << f.indications << "\n    "
         << "root#orv.db " << f.namespaceDbBytes / mb << " MB (peak " << f.peakNamespaceDbBytes / mb
         << " MB), WAL " << f.walBytes / mb << " MB (peak " << f.peakWalBytes / mb << " MB), repository folder "
         << f.databaseBytes / mb << " MB\n    ";
    const double total = f.command.seconds + f.classify.seconds + f.dispatch.seconds + f.commit.seconds;
    long peakKb = std::max(std::max(f.command.peakKb, f.classify.peakKb), std::max(f.dispatch.peakKb, f.commit.peakKb));
    auto verdict = [](bool ok) { return ok ? "ok" : "OVER"; };
    line << "total " << total << " s";
    if (std::string(name) == "unchanged load")
        line << " (target " << kTargetUnchangedSeconds << " s: " << verdict(total <= kTargetUnchangedSeconds) << ")";
    line << " | peak resident " << peakKb / 1024 << " MB (target " << kTargetResidentMB << " MB: "
         << verdict(peakKb / 1024.0 <= kTargetResidentMB) << ") | database peak " << f.peakNamespaceDbBytes / mb
         << " MB (limit " << kTargetDatabaseMB << " MB: "
         << verdict(f.peakNamespaceDbBytes / mb < kTargetDatabaseMB) << ")";
    std::cerr << line.str() << std::endl;
}

void SetTime(benchmark::State& state, const LoadFigures& f) {
    state.SetIterationTime(f.command.seconds + f.classify.seconds + f.dispatch.seconds + f.commit.seconds);
}

void BM_FirstLoad(benchmark::State& state) {
    Bench& bench = TheBench();
    LoadFigures last;
    for (auto _ : state) {
        bench.Forget();
        last = bench.Load();
        SetTime(state, last);
    }
    Report(state, "first load", last);
}

// The two halves of command+parse measured apart: the view tool with its
// output thrown away, and the parse of a copy of that output pushed in
// 64 KiB pieces. In the load they overlap, the tool writing while the
// parser reads.
struct Halves {
    double toolSeconds = 0;
    double parseSeconds = 0;
    size_t outputBytes = 0;
};

Halves MeasureHalves() {
    Halves halves;
    std::string output;
    auto start = std::chrono::steady_clock::now();
    FILE* pipe = ::popen(("_OUTFMTSET=xml '" + kBin + "/arraysim-bin/Vexview' -all 2>&1").c_str(), "r");
    if (pipe == nullptr) throw std::runtime_error("the view tool cannot be started");
    char buffer[65536];
    size_t got;
    while ((got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) output.append(buffer, got);
    if (::pclose(pipe) != 0) throw std::runtime_error("the view tool failed");
    halves.toolSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    halves.outputBytes = output.size();

    XMLParser parser;
    start = std::chrono::steady_clock::now();
    for (size_t at = 0; at < output.size(); at += sizeof buffer) {
        const size_t piece = std::min(sizeof buffer, output.size() - at);
        parser.LoadChunk(output.data() + at, static_cast<int>(piece), 0);
    }
    parser.LoadChunk(buffer, 0, 1);
    halves.parseSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (!parser.GetReturnCode()) throw std::runtime_error("the view's output does not parse");
    return halves;
}

void BM_UnchangedLoad(benchmark::State& state) {
    Bench& bench = TheBench();
    bench.Load();  // whatever came before, the array is known from here on
    LoadFigures last;
    for (auto _ : state) {
        last = bench.Load();
        SetTime(state, last);
    }
    Report(state, "unchanged load", last);
    const Halves halves = MeasureHalves();
    state.counters["view_tool_s"] = halves.toolSeconds;
    state.counters["parse_alone_s"] = halves.parseSeconds;
    std::ostringstream line;
    line << std::fixed << std::setprecision(3) << "    apart: view tool " << halves.toolSeconds << " s ("
         << halves.outputBytes / (1024.0 * 1024.0) << " MB of XML) | parse alone " << halves.parseSeconds << " s";
    std::cerr << line.str() << std::endl;
}

void BM_OnePercentChangedLoad(benchmark::State& state) {
    Bench& bench = TheBench();
    bench.Load();
    LoadFigures last;
    for (auto _ : state) {
        state.counters["changed_at_console"] = bench.ChangeOnePercent();
        last = bench.Load();
        SetTime(state, last);
    }
    Report(state, "1% changed load", last);
}

BENCHMARK(BM_FirstLoad)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_UnchangedLoad)->UseManualTime()->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OnePercentChangedLoad)->UseManualTime()->Iterations(3)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
