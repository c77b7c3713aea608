#include <Pegasus/Common/Tracer.h>
#include <Pegasus/Common/Exception.h>

#include <atomic>
#include <cctype>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

#include <pthread.h>
#include <sys/time.h>
#include <unistd.h>

PEGASUS_NAMESPACE_BEGIN

const Uint32 Tracer::LEVEL1 = 0x01;
const Uint32 Tracer::LEVEL2 = 0x02;
const Uint32 Tracer::LEVEL3 = 0x04;
const Uint32 Tracer::LEVEL4 = 0x08;

namespace {

// Method entry and exit: traced only at the highest configured level.
const Uint32 kMethodLevel = 0x10;

const char* const kComponentNames[TRC_COMPONENT_COUNT] = {
    "Xml", "XmlIO", "Http", "Repository", "Dispatcher", "OsAbstraction", "Config",
    "IndicationHandler", "Authentication", "Authorization", "UserManager", "Shutdown", "Server",
    "IndicationService", "MessageQueueService", "ProviderManager", "ObjectResolution", "WQL",
    "CQL", "FQL", "Thread", "CIMExportRequestDispatcher", "SSL", "ControlProvider", "CIMOMHandle",
    "L10N", "ExportClient", "Listener", "DiscardedData", "ProviderAgent", "IndicationFormatter",
    "StatisticalData", "CMPIProvider", "IndicationGeneration", "IndicationReceipt",
    "CMPIProviderInterface", "WsmServer", "RsServer", "WebServer", "LogMessages",
    "WMIMapperConsumer", "InternalProvider", "EnumContext", "Schema", "ProviderModule"};

struct TraceState {
    std::mutex mutex;
    FILE* file = nullptr;
    std::atomic<Uint32> levelMask{0};
    std::atomic<std::uint64_t> componentMask{0};
    std::atomic<bool> on{false};

    void refresh() {
        on.store(file != nullptr && levelMask.load() != 0 && componentMask.load() != 0);
    }
};

TraceState& state() {
    static TraceState* s = new TraceState;  // outlives every static that traces at exit
    return *s;
}

std::string trimmed(const std::string& text) {
    std::size_t b = 0, e = text.size();
    while (b < e && std::isspace(static_cast<unsigned char>(text[b]))) ++b;
    while (e > b && std::isspace(static_cast<unsigned char>(text[e - 1]))) --e;
    return text.substr(b, e - b);
}

bool equalNoCase(const std::string& a, const char* b) { return ::strcasecmp(a.c_str(), b) == 0; }

// The mask of a component list, or false when a name is unknown.
bool parseComponents(const std::string& list, std::uint64_t& mask) {
    mask = 0;
    const std::string all = trimmed(list);
    if (all.empty()) return true;
    if (equalNoCase(all, "ALL")) {
        mask = (std::uint64_t(1) << TRC_COMPONENT_COUNT) - 1;
        return true;
    }
    std::size_t start = 0;
    while (start <= list.size()) {
        std::size_t comma = list.find(',', start);
        if (comma == std::string::npos) comma = list.size();
        const std::string name = trimmed(list.substr(start, comma - start));
        bool found = false;
        for (int i = 0; i < TRC_COMPONENT_COUNT && !found; ++i) {
            if (equalNoCase(name, kComponentNames[i])) {
                mask |= std::uint64_t(1) << i;
                found = true;
            }
        }
        if (!found) return false;
        start = comma + 1;
    }
    return true;
}

void writeLine(const char* fileName, Uint32 lineNum, TraceComponentId component,
    const char* message) {
    struct timeval now;
    ::gettimeofday(&now, nullptr);
    const char* base = fileName != nullptr ? std::strrchr(fileName, '/') : nullptr;
    base = base != nullptr ? base + 1 : (fileName != nullptr ? fileName : "");
    TraceState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (s.file == nullptr) return;
    std::fprintf(s.file, "%lds-%ldus: %s [%ld:%lu:%s:%u]: %s\n", static_cast<long>(now.tv_sec),
        static_cast<long>(now.tv_usec), Tracer::componentName(component),
        static_cast<long>(::getpid()), static_cast<unsigned long>(::pthread_self()), base,
        lineNum, message);
    std::fflush(s.file);
}

void writeFormatted(const char* fileName, Uint32 lineNum, TraceComponentId component,
    const char* format, va_list args) {
    char small[1024];
    va_list copy;
    va_copy(copy, args);
    const int needed = std::vsnprintf(small, sizeof small, format, copy);
    va_end(copy);
    if (needed < 0) {
        writeLine(fileName, lineNum, component, "(unprintable trace message)");
        return;
    }
    if (static_cast<std::size_t>(needed) < sizeof small) {
        writeLine(fileName, lineNum, component, small);
        return;
    }
    std::vector<char> big(static_cast<std::size_t>(needed) + 1);
    std::vsnprintf(big.data(), big.size(), format, args);
    writeLine(fileName, lineNum, component, big.data());
}

}  // namespace

const char* Tracer::componentName(TraceComponentId component) {
    if (component < 0 || component >= TRC_COMPONENT_COUNT) return "Unknown";
    return kComponentNames[component];
}

Boolean Tracer::isTraceOn() { return state().on.load(std::memory_order_relaxed); }

Boolean Tracer::isTraceEnabled(const TraceComponentId traceComponent, const Uint32 traceLevel) {
    if (!isTraceOn()) return false;
    if (traceComponent < 0 || traceComponent >= TRC_COMPONENT_COUNT) return false;
    TraceState& s = state();
    return (s.levelMask.load(std::memory_order_relaxed) & traceLevel) != 0 &&
           (s.componentMask.load(std::memory_order_relaxed) >> traceComponent & 1) != 0;
}

void Tracer::traceCString(const char* fileName, const Uint32 lineNum,
    const TraceComponentId traceComponent, const char* cstring) {
    if (!isTraceOn()) return;
    if (traceComponent < 0 || traceComponent >= TRC_COMPONENT_COUNT) return;
    if ((state().componentMask.load() >> traceComponent & 1) == 0) return;
    writeLine(fileName, lineNum, traceComponent, cstring != nullptr ? cstring : "");
}

void Tracer::traceCIMException(const TraceComponentId traceComponent, const Uint32 level,
    const CIMException& cimException) {
    if (!isTraceEnabled(traceComponent, level)) return;
    const std::string message = "CIMException: code " +
        std::to_string(static_cast<int>(cimException.getCode())) + ": " +
        cimException.getMessage().toUtf8();
    writeLine("", 0, traceComponent, message.c_str());
}

void Tracer::traceFormat(const char* fileName, Uint32 lineNum, TraceComponentId component,
    Uint32 level, const char* format, ...) {
    if (!isTraceEnabled(component, level) || format == nullptr) return;
    va_list args;
    va_start(args, format);
    writeFormatted(fileName, lineNum, component, format, args);
    va_end(args);
}

void Tracer::Site::trace(TraceComponentId component, Uint32 level, const char* format, ...) {
    if (!isTraceEnabled(component, level) || format == nullptr) return;
    va_list args;
    va_start(args, format);
    writeFormatted(_file, _line, component, format, args);
    va_end(args);
}

void Tracer::traceEnter(TracerToken& token, const char* fileName, Uint32 lineNum,
    TraceComponentId component, const char* method) {
    token.component = component;
    token.method = method;
    if (!isTraceEnabled(component, kMethodLevel)) return;
    const std::string message = std::string("Entering method ") + (method != nullptr ? method : "");
    writeLine(fileName, lineNum, component, message.c_str());
}

void Tracer::traceExit(TracerToken& token, const char* fileName, Uint32 lineNum) {
    if (token.method == nullptr || !isTraceEnabled(token.component, kMethodLevel)) return;
    const std::string message = std::string("Exiting method ") + token.method;
    writeLine(fileName, lineNum, token.component, message.c_str());
}

Uint32 Tracer::setTraceFile(const char* traceFile) {
    if (traceFile == nullptr || *traceFile == '\0') return 1;
    FILE* file = std::fopen(traceFile, "a");
    if (file == nullptr) return 1;
    TraceState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (s.file != nullptr) std::fclose(s.file);
    s.file = file;
    s.refresh();
    return 0;
}

Boolean Tracer::setTraceLevel(const Uint32 traceLevel) {
    Uint32 mask;
    if (traceLevel == LEVEL1) mask = 0x01;
    else if (traceLevel == LEVEL2) mask = 0x03;
    else if (traceLevel == LEVEL3) mask = 0x07;
    else if (traceLevel == LEVEL4) mask = 0x0F;
    else return false;
    TraceState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.levelMask.store(mask);
    s.refresh();
    return true;
}

Boolean Tracer::setTraceLevelNumber(Uint32 number) {
    static const Uint32 masks[] = {0x00, 0x01, 0x03, 0x07, 0x0F, 0x1F};
    if (number > 5) return false;
    TraceState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.levelMask.store(masks[number]);
    s.refresh();
    return true;
}

Boolean Tracer::isValidComponents(const String& traceComponents) {
    std::uint64_t mask;
    return parseComponents(traceComponents.toUtf8(), mask);
}

Boolean Tracer::setTraceComponents(const String& traceComponents) {
    std::uint64_t mask;
    if (!parseComponents(traceComponents.toUtf8(), mask)) return false;
    TraceState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.componentMask.store(mask);
    s.refresh();
    return true;
}

void Tracer::flushTrace() {
    TraceState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (s.file != nullptr) std::fflush(s.file);
}

void Tracer::closeTrace() {
    TraceState& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (s.file != nullptr) std::fclose(s.file);
    s.file = nullptr;
    s.refresh();
}

PEGASUS_NAMESPACE_END
