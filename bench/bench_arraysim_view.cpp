// Vexview -all on the largest template: the document built from the state
// and written as XML, with and without reading the stored state first.
// Prints the document's size and the time of one whole answer.

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>

#include <unistd.h>

#include "StateStore.h"
#include "Templates.h"
#include "ViewCommand.h"
#include "ViewRecordsBuilder.h"
#include "XmlDocWriter.h"

using namespace arraysim;

namespace {

const ArrayState& MaxArray() {
    static const ArrayState state = [] {
        TemplateOptions options;
        options.size = "max";
        return Templates::Build(options);
    }();
    return state;
}

std::string Answer(const ArrayState& state) {
    return XmlDocWriter::ToString(ViewCommand::Build(ViewRecordsBuilder::Build(state), ViewCommand::Scope::All));
}

// A stored copy of the max array in a temporary folder, removed at exit.
class StoredArray {
public:
    StoredArray() {
        char pattern[] = "/tmp/bench-arraysim-view-XXXXXX";
        const char* made = ::mkdtemp(pattern);
        if (made == nullptr) throw std::runtime_error("cannot make a temporary folder");
        m_dir = made;
        StateStore(m_dir).Replace(MaxArray());
    }
    ~StoredArray() {
        std::error_code ignored;
        std::filesystem::remove_all(m_dir, ignored);
    }
    const std::string& Dir() const { return m_dir; }

private:
    std::string m_dir;
};

void BM_VexviewAllFromState(benchmark::State& s) {
    const ArrayState& state = MaxArray();
    size_t bytes = 0;
    for (auto _ : s) {
        const std::string xml = Answer(state);
        bytes = xml.size();
        benchmark::DoNotOptimize(xml.data());
    }
    s.counters["bytes"] = static_cast<double>(bytes);
    s.SetBytesProcessed(static_cast<int64_t>(bytes) * s.iterations());
}
BENCHMARK(BM_VexviewAllFromState)->Unit(benchmark::kMillisecond);

void BM_VexviewAllWithStateRead(benchmark::State& s) {
    static StoredArray stored;
    StateStore store(stored.Dir());
    size_t bytes = 0;
    for (auto _ : s) {
        const std::string xml = Answer(store.Read());
        bytes = xml.size();
        benchmark::DoNotOptimize(xml.data());
    }
    s.counters["bytes"] = static_cast<double>(bytes);
}
BENCHMARK(BM_VexviewAllWithStateRead)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    // One plain figure first, as a person running the tool would see it.
    const ArrayState& state = MaxArray();
    const auto start = std::chrono::steady_clock::now();
    const std::string xml = Answer(state);
    const auto took = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    std::cout << "Vexview -all, max template (" << state.lds.size() << " LDs, " << state.disks.size() << " disks, "
              << state.pools.size() << " pools, " << state.ldSets.size() << " LD sets): " << xml.size()
              << " bytes of XML in " << took << " ms" << std::endl;

    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
