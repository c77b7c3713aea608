#include <Pegasus/Server/CIMServerConfig.h>
#include <Pegasus/Common/Tracer.h>

#include <cctype>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <map>
#include <sstream>
#include <strings.h>

namespace Pegasus {

namespace {

std::string trim(const std::string& text) {
    std::size_t b = 0, e = text.size();
    while (b < e && std::isspace(static_cast<unsigned char>(text[b]))) ++b;
    while (e > b && std::isspace(static_cast<unsigned char>(text[e - 1]))) --e;
    return text.substr(b, e - b);
}

bool parseBool(const std::string& name, const std::string& value) {
    if (::strcasecmp(value.c_str(), "true") == 0) return true;
    if (::strcasecmp(value.c_str(), "false") == 0) return false;
    throw ConfigError(name + " must be true or false, not \"" + value + "\"");
}

long parseNumber(const std::string& name, const std::string& value, long low, long high) {
    bool digits = !value.empty() && value.size() <= 9;
    for (char c : value) digits = digits && std::isdigit(static_cast<unsigned char>(c));
    const long number = digits ? std::strtol(value.c_str(), nullptr, 10) : -1;
    if (!digits || number < low || number > high)
        throw ConfigError(name + " must be a number from " + std::to_string(low) + " to " +
                          std::to_string(high) + ", not \"" + value + "\"");
    return number;
}

std::string parsePath(const std::string& name, const std::string& value) {
    if (value.empty()) throw ConfigError(name + " must name a file or folder");
    if (value.find('\0') != std::string::npos) throw ConfigError(name + " holds a NUL byte");
    return CIMServerConfig::underRoot(value);
}

bool validHostName(const std::string& value) {
    if (value.size() > 253) return false;
    for (char c : value)
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '-' && c != '.' && c != '_') return false;
    return true;
}

} // namespace

CIMServerConfig::CIMServerConfig()
    : passwordFile(underRoot("/opt/pegasus/etc/cimserver.passwd")),
      sslCertificateFilePath(underRoot("/opt/pegasus/etc/server.pem")),
      sslKeyFilePath(underRoot("/opt/pegasus/etc/file.pem")),
      traceFilePath(underRoot("/opt/pegasus/trace/cimserver.trc")),
      repositoryDir(underRoot("/opt/pegasus/repository")),
      providerDir(underRoot("/opt/pegasus/lib")),
      schemaDir(underRoot("/opt/pegasus/schema")),
      auditLogFile(underRoot("/opt/pegasus/logs/audit.log")),
      pidFile(underRoot("/var/run/cimserver.pid")) {}

std::string CIMServerConfig::underRoot(const std::string& path) {
    const char* root = std::getenv("SMIS_ROOT");
    if (root == nullptr || *root == '\0' || path.empty() || path[0] != '/') return path;
    std::string base = root;
    while (base.size() > 1 && base.back() == '/') base.pop_back();
    return base + path;
}

std::string CIMServerConfig::defaultFile() { return underRoot("/opt/pegasus/etc/cimserver.conf"); }

void CIMServerConfig::set(const std::string& name, const std::string& value) {
    static const std::map<std::string, void (*)(CIMServerConfig&, const std::string&, const std::string&)>
        setters = {
            {"httpPort", [](CIMServerConfig& c, const std::string& n, const std::string& v) {
                 c.httpPort = static_cast<int>(parseNumber(n, v, 1, 65535)); }},
            {"httpsPort", [](CIMServerConfig& c, const std::string& n, const std::string& v) {
                 c.httpsPort = static_cast<int>(parseNumber(n, v, 1, 65535)); }},
            {"enableHttpConnection", [](CIMServerConfig& c, const std::string& n, const std::string& v) {
                 c.enableHttpConnection = parseBool(n, v); }},
            {"enableHttpsConnection", [](CIMServerConfig& c, const std::string& n, const std::string& v) {
                 c.enableHttpsConnection = parseBool(n, v); }},
            {"listenAddress", [](CIMServerConfig& c, const std::string& n, const std::string& v) {
                 if (::strcasecmp(v.c_str(), "all") == 0) c.loopbackOnly = false;
                 else if (::strcasecmp(v.c_str(), "loopback") == 0) c.loopbackOnly = true;
                 else throw ConfigError(n + " must be all or loopback, not \"" + v + "\""); }},
            {"enableAuthentication", [](CIMServerConfig& c, const std::string& n, const std::string& v) {
                 c.enableAuthentication = parseBool(n, v); }},
            {"enableAssociationTraversal", [](CIMServerConfig& c, const std::string& n, const std::string& v) {
                 c.enableAssociationTraversal = parseBool(n, v); }},
            {"passwordFile", [](CIMServerConfig& c, const std::string& n, const std::string& v) {
                 c.passwordFile = parsePath(n, v); }},
            {"sslCertificateFilePath", [](CIMServerConfig& c, const std::string& n, const std::string& v) {
                 c.sslCertificateFilePath = parsePath(n, v); }},
            {"sslKeyFilePath", [](CIMServerConfig& c, const std::string& n, const std::string& v) {
                 c.sslKeyFilePath = parsePath(n, v); }},
            {"traceLevel", [](CIMServerConfig& c, const std::string& n, const std::string& v) {
                 c.traceLevel = static_cast<unsigned>(parseNumber(n, v, 0, 5)); }},
            {"traceComponents", [](CIMServerConfig& c, const std::string& n, const std::string& v) {
                 if (!Tracer::isValidComponents(String::fromUtf8(v)))
                     throw ConfigError(n + " names an unknown trace component: \"" + v + "\"");
                 c.traceComponents = v; }},
            {"traceFilePath", [](CIMServerConfig& c, const std::string& n, const std::string& v) {
                 c.traceFilePath = parsePath(n, v); }},
            {"repositoryDir", [](CIMServerConfig& c, const std::string& n, const std::string& v) {
                 c.repositoryDir = parsePath(n, v); }},
            {"providerDir", [](CIMServerConfig& c, const std::string& n, const std::string& v) {
                 c.providerDir = parsePath(n, v); }},
            {"schemaDir", [](CIMServerConfig& c, const std::string& n, const std::string& v) {
                 c.schemaDir = parsePath(n, v); }},
            {"auditLogFile", [](CIMServerConfig& c, const std::string& n, const std::string& v) {
                 c.auditLogFile = parsePath(n, v); }},
            {"pidFile", [](CIMServerConfig& c, const std::string& n, const std::string& v) {
                 c.pidFile = parsePath(n, v); }},
            {"hostname", [](CIMServerConfig& c, const std::string& n, const std::string& v) {
                 if (!validHostName(v)) throw ConfigError(n + " is not a host name: \"" + v + "\"");
                 c.hostname = v; }},
            {"fullyQualifiedHostName", [](CIMServerConfig& c, const std::string& n, const std::string& v) {
                 if (!validHostName(v)) throw ConfigError(n + " is not a host name: \"" + v + "\"");
                 c.fullyQualifiedHostName = v; }},
        };
    const auto found = setters.find(name);
    if (found == setters.end()) throw ConfigError("unknown setting \"" + name + "\"");
    found->second(*this, name, value);
}

CIMServerConfig CIMServerConfig::parse(const std::string& text, const std::string& source) {
    CIMServerConfig config;
    std::istringstream lines(text);
    std::string line;
    unsigned number = 0;
    std::map<std::string, unsigned> seen;
    while (std::getline(lines, line)) {
        ++number;
        const std::string where = source + ":" + std::to_string(number) + ": ";
        const std::string content = trim(line);
        if (content.empty() || content[0] == '#') continue;
        const std::size_t equals = content.find('=');
        if (equals == std::string::npos) throw ConfigError(where + "expected name=value, found \"" + content + "\"");
        const std::string name = trim(content.substr(0, equals));
        const std::string value = trim(content.substr(equals + 1));
        const auto earlier = seen.find(name);
        if (earlier != seen.end())
            throw ConfigError(where + name + " is set twice (first on line " + std::to_string(earlier->second) + ")");
        seen[name] = number;
        try {
            config.set(name, value);
        } catch (const ConfigError& e) {
            throw ConfigError(where + e.what());
        }
    }
    return config;
}

CIMServerConfig CIMServerConfig::load(const std::string& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) throw ConfigError(file + ": cannot read the configuration file");
    std::ostringstream text;
    text << in.rdbuf();
    return parse(text.str(), file);
}

} // namespace Pegasus
