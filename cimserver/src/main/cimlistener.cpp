// A CIM-XML indication listener for operators and tests: accepts
// ExportIndication requests over HTTP (or HTTPS with --cert/--key) and
// prints one line per indication, as text or as JSON.

#include <Pegasus/CIMXml/CIMXmlReader.h>
#include <Pegasus/CIMXml/CIMXmlWriter.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include <CLI/CLI.hpp>
#include <httplib.h>
#include <nlohmann/json.hpp>

#include <atomic>
#include <csignal>
#include <cstdint>
#include <iostream>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include <pthread.h>
#include <strings.h>

using namespace Pegasus;

namespace {

// Embedded instances nest; deeper than this is printed as its class only.
constexpr int kMaxJsonDepth = 16;

std::string quoteIfNeeded(const std::string& text) {
    bool plain = !text.empty();
    for (char c : text)
        if (c == ' ' || c == '"' || c == '\\' || static_cast<unsigned char>(c) < 0x20) plain = false;
    if (plain) return text;
    std::string out = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\') out += '\\';
        if (c == '\n') {
            out += "\\n";
            continue;
        }
        if (static_cast<unsigned char>(c) < 0x20) {
            out += '?';
            continue;
        }
        out += c;
    }
    return out + "\"";
}

template <class T>
nlohmann::json arrayOf(const CIMValue& value) {
    Array<T> items;
    value.get(items);
    nlohmann::json out = nlohmann::json::array();
    for (Uint32 i = 0; i < items.size(); ++i) out.push_back(items[i]);
    return out;
}

nlohmann::json instanceToJson(const CIMInstance& instance, int depth);

nlohmann::json scalarToJson(const CIMValue& value, int depth) {
    switch (value.getType()) {
    case CIMTYPE_BOOLEAN: { Boolean x; value.get(x); return static_cast<bool>(x); }
    case CIMTYPE_UINT8: { Uint8 x; value.get(x); return x; }
    case CIMTYPE_SINT8: { Sint8 x; value.get(x); return x; }
    case CIMTYPE_UINT16: { Uint16 x; value.get(x); return x; }
    case CIMTYPE_SINT16: { Sint16 x; value.get(x); return x; }
    case CIMTYPE_UINT32: { Uint32 x; value.get(x); return x; }
    case CIMTYPE_SINT32: { Sint32 x; value.get(x); return x; }
    case CIMTYPE_UINT64: { Uint64 x; value.get(x); return x; }
    case CIMTYPE_SINT64: { Sint64 x; value.get(x); return x; }
    case CIMTYPE_REAL32: { Real32 x; value.get(x); return x; }
    case CIMTYPE_REAL64: { Real64 x; value.get(x); return x; }
    case CIMTYPE_INSTANCE: { CIMInstance x; value.get(x); return instanceToJson(x, depth + 1); }
    case CIMTYPE_OBJECT: { CIMObject x; value.get(x); return instanceToJson(CIMInstance(x), depth + 1); }
    default: return value.toString().toUtf8();   // strings, char16, datetimes, references
    }
}

nlohmann::json valueToJson(const CIMValue& value, int depth) {
    if (value.isNull()) return nullptr;
    if (!value.isArray()) return scalarToJson(value, depth);
    switch (value.getType()) {
    case CIMTYPE_BOOLEAN: {
        Array<Boolean> items;
        value.get(items);
        nlohmann::json out = nlohmann::json::array();
        for (Uint32 i = 0; i < items.size(); ++i) out.push_back(static_cast<bool>(items[i]));
        return out;
    }
    case CIMTYPE_UINT8: return arrayOf<Uint8>(value);
    case CIMTYPE_SINT8: return arrayOf<Sint8>(value);
    case CIMTYPE_UINT16: return arrayOf<Uint16>(value);
    case CIMTYPE_SINT16: return arrayOf<Sint16>(value);
    case CIMTYPE_UINT32: return arrayOf<Uint32>(value);
    case CIMTYPE_SINT32: return arrayOf<Sint32>(value);
    case CIMTYPE_UINT64: return arrayOf<Uint64>(value);
    case CIMTYPE_SINT64: return arrayOf<Sint64>(value);
    case CIMTYPE_REAL32: return arrayOf<Real32>(value);
    case CIMTYPE_REAL64: return arrayOf<Real64>(value);
    case CIMTYPE_STRING: {
        Array<String> items;
        value.get(items);
        nlohmann::json out = nlohmann::json::array();
        for (Uint32 i = 0; i < items.size(); ++i) out.push_back(items[i].toUtf8());
        return out;
    }
    case CIMTYPE_INSTANCE: {
        Array<CIMInstance> items;
        value.get(items);
        nlohmann::json out = nlohmann::json::array();
        for (Uint32 i = 0; i < items.size(); ++i) out.push_back(instanceToJson(items[i], depth + 1));
        return out;
    }
    case CIMTYPE_OBJECT: {
        Array<CIMObject> items;
        value.get(items);
        nlohmann::json out = nlohmann::json::array();
        for (Uint32 i = 0; i < items.size(); ++i) out.push_back(instanceToJson(CIMInstance(items[i]), depth + 1));
        return out;
    }
    default: return value.toString().toUtf8();
    }
}

nlohmann::json instanceToJson(const CIMInstance& instance, int depth) {
    nlohmann::json out;
    out["class"] = instance.getClassName().getString().toUtf8();
    if (depth > kMaxJsonDepth) return out;
    nlohmann::json properties = nlohmann::json::object();
    for (Uint32 i = 0; i < instance.getPropertyCount(); ++i) {
        const CIMConstProperty property = instance.getProperty(i);
        properties[property.getName().getString().toUtf8()] = valueToJson(property.getValue(), depth);
    }
    out["properties"] = properties;
    return out;
}

// The class, then what tells the indication apart: its sequence number,
// severity and alert fields, and the source instance's class and keys.
std::string textLine(const CIMInstance& indication) {
    std::string line = indication.getClassName().getString().toUtf8();
    static const char* const summary[] = {"SequenceNumber", "PerceivedSeverity", "AlertType", "MessageID",
                                          "MethodName", "AlertingManagedElement", "Description", "SourceInstanceModelPath"};
    for (const char* name : summary) {
        const Uint32 index = indication.findProperty(CIMName(name));
        if (index == PEG_NOT_FOUND) continue;
        const CIMValue& value = indication.getProperty(index).getValue();
        if (value.isNull()) continue;
        line += std::string(" ") + name + "=" + quoteIfNeeded(value.toString().toUtf8());
    }
    const Uint32 source = indication.findProperty(CIMName("SourceInstance"));
    if (source != PEG_NOT_FOUND) {
        const CIMValue& value = indication.getProperty(source).getValue();
        if (!value.isNull() && !value.isArray() &&
            (value.getType() == CIMTYPE_INSTANCE || value.getType() == CIMTYPE_OBJECT)) {
            CIMInstance instance;
            if (value.getType() == CIMTYPE_INSTANCE) {
                value.get(instance);
            } else {
                CIMObject object;
                value.get(object);
                instance = CIMInstance(object);
            }
            std::string text = instance.getClassName().getString().toUtf8();
            const Array<CIMKeyBinding>& keys = instance.getPath().getKeyBindings();
            for (Uint32 i = 0; i < keys.size(); ++i)
                text += std::string(i == 0 ? "." : ",") + keys[i].getName().getString().toUtf8() + "=" +
                        keys[i].getValue().toUtf8();
            line += " SourceInstance=" + quoteIfNeeded(text);
        }
    }
    return line;
}

std::string header(const httplib::Request& request, const char* name) {
    // M-POST style "NN-" prefixes are not used by export clients; plain names only.
    return request.has_header(name) ? request.get_header_value(name) : std::string();
}

} // namespace

int main(int argc, char** argv) {
    CLI::App app{"Receives CIM-XML indications and prints one line per indication"};
    int port = 5999;
    std::string address = "0.0.0.0";
    std::string certFile, keyFile;
    bool json = false;
    long long count = 0;
    app.add_option("--port", port, "Port to listen on")->check(CLI::Range(1, 65535));
    app.add_option("--address", address, "Address to listen on (default all)");
    auto* cert = app.add_option("--cert", certFile, "Certificate (PEM) for HTTPS")->check(CLI::ExistingFile);
    auto* key = app.add_option("--key", keyFile, "Private key (PEM) for HTTPS")->check(CLI::ExistingFile);
    cert->needs(key);
    key->needs(cert);
    app.add_flag("--json", json, "Print JSON lines with all properties");
    app.add_option("--count", count, "Exit after this many indications")->check(CLI::PositiveNumber);
    CLI11_PARSE(app, argc, argv);

    // SIGINT and SIGTERM end the listener cleanly; a thread waits for them.
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);

    std::unique_ptr<httplib::Server> server;
    if (!certFile.empty()) {
        auto ssl = std::make_unique<httplib::SSLServer>(certFile.c_str(), keyFile.c_str());
        if (!ssl->is_valid()) {
            std::cerr << "cimlistener: cannot use the certificate " << certFile << " with the key " << keyFile
                      << std::endl;
            return 1;
        }
        server = std::move(ssl);
    } else {
        server = std::make_unique<httplib::Server>();
    }

    std::mutex outputMutex;
    long long received = 0;
    auto handle = [&](const httplib::Request& request, httplib::Response& response) {
        response.set_header("CIMExport", "MethodResponse");
        if (strcasecmp(header(request, "CIMExport").c_str(), "MethodRequest") != 0) {
            response.status = 400;
            response.set_header("CIMError", "unsupported-operation");
            return;
        }
        if (!header(request, "CIMExportBatch").empty()) {
            response.status = 501;
            response.set_header("CIMError", "multiple-requests-unsupported");
            return;
        }
        const std::string method = header(request, "CIMExportMethod");
        if (method != "ExportIndication") {
            response.status = 400;
            response.set_header("CIMError", "header-mismatch");
            return;
        }
        CIMXmlReader::ExportIndication exported;
        std::string fault;
        try {
            exported = CIMXmlReader::readExportIndication(request.body);
        } catch (const Exception& e) {
            fault = e.getMessage().toUtf8();
        } catch (const std::exception& e) {
            fault = e.what();
        }
        if (!fault.empty() || exported.indication.isUninitialized()) {
            response.status = 400;
            response.set_header("CIMError", "request-not-valid");
            std::lock_guard<std::mutex> lock(outputMutex);
            std::cerr << "cimlistener: rejected a request: " << (fault.empty() ? "no indication" : fault) << std::endl;
            return;
        }
        if (exported.methodName != "ExportIndication") {
            response.status = 400;
            response.set_header("CIMError", "header-mismatch");
            return;
        }
        bool last = false;
        {
            std::lock_guard<std::mutex> lock(outputMutex);
            if (count > 0 && received >= count) {
                response.status = 503;   // already done: the sender keeps it for a later listener
                return;
            }
            if (json) std::cout << instanceToJson(exported.indication, 0).dump() << std::endl;
            else std::cout << textLine(exported.indication) << std::endl;
            ++received;
            last = count > 0 && received == count;
        }
        response.set_content(CIMXmlWriter::formatExportIndicationResponse(exported.messageId),
            "application/xml; charset=utf-8");
        if (last) server->stop();
    };
    server->set_tcp_nodelay(true);
    server->Post(".*", handle);

    if (!server->bind_to_port(address.c_str(), port)) {
        std::cerr << "cimlistener: cannot listen on " << address << ":" << port << std::endl;
        return 1;
    }
    std::cerr << "cimlistener: listening on " << (certFile.empty() ? "http" : "https") << "://" << address << ":"
              << port << std::endl;

    std::thread([&server, signals]() {
        int received = 0;
        if (sigwait(&signals, &received) == 0) server->stop();
    }).detach();

    server->listen_after_bind();
    std::cout.flush();
    return 0;
}
