// What a large enumeration costs the server: a repository on the real schema
// holding 8192 storage volumes (40 properties of the volume class set) and
// one pool they are all allocated from, answered through the CIM-XML handler
// as a client's EnumerateInstances, EnumerateInstanceNames, Associators,
// AssociatorNames and References. Each answer is made twice: through the server's array
// calls ("arrays": the whole result decoded into objects first, as every
// answer was made before the streamed calls existed) and streamed (each
// result written as it is decoded). Printed per answer: time, answer size,
// and how far the process's peak resident size (VmHWM) rose above what it
// was just before. Figures only; nothing passes or fails.
//
//   bench_enumerate [volumes]        (default 8192)

#include <Pegasus/CIMXml/CIMXmlOperationHandler.h>
#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Repository/Repository.h>
#include <Pegasus/Schema/ClassDecl.h>
#include <Pegasus/Schema/SchemaManager.h>
#include <Pegasus/Server/OperationDispatcher.h>
#include <Pegasus/Server/ProviderManager.h>
#include <Pegasus/Server/ProviderRegistrationManager.h>
#include <Pegasus/Server/ServerCIMOMHandleRep.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include <malloc.h>
#include <unistd.h>

using namespace Pegasus;

namespace {

const char* const kNamespace = "root/orv";
const char* const kVolumeClass = "ORV_Storage_StorageVolume";
const char* const kPoolClass = "ORV_Storage_StoragePool";
const char* const kAllocatedClass = "ORV_Storage_AllocatedFromStoragePool";

long statusKb(const char* field)
{
    std::ifstream in("/proc/self/status");
    std::string line;
    const std::string prefix = std::string(field) + ":";
    while (std::getline(in, line))
        if (line.compare(0, prefix.size(), prefix) == 0)
            return std::atol(line.c_str() + prefix.size());
    return -1;
}

// Lets the peak follow the current size again (Linux: "5" to clear_refs).
bool resetPeak()
{
    std::ofstream out("/proc/self/clear_refs");
    out << "5";
    out.flush();
    return bool(out);
}

CIMValue sampleValue(const PropertyDecl& p, Uint32 n)
{
    const std::string text = p.name + "-" + std::to_string(n);
    if (!p.embeddedInstanceClass.empty() || p.embeddedObject)
        return CIMValue(p.type, p.isArray);  // null: an embedded object needs a class of its own
    if (p.isArray)
    {
        switch (p.type)
        {
        case CIMTYPE_UINT16: { Array<Uint16> a; a.append(2); a.append(Uint16(n % 7)); return CIMValue(a); }
        case CIMTYPE_STRING:
        {
            Array<String> a;
            a.append(String::fromUtf8(text));
            a.append(String::fromUtf8("second " + text));
            return CIMValue(a);
        }
        default: return CIMValue(p.type, true);
        }
    }
    switch (p.type)
    {
    case CIMTYPE_BOOLEAN: return CIMValue(Boolean(n % 2 == 0));
    case CIMTYPE_UINT8: return CIMValue(Uint8(n % 200));
    case CIMTYPE_UINT16: return CIMValue(Uint16(n % 60000));
    case CIMTYPE_UINT32: return CIMValue(Uint32(n));
    case CIMTYPE_UINT64: return CIMValue(Uint64(2097152) * 512 + n);
    case CIMTYPE_SINT32: return CIMValue(Sint32(n));
    case CIMTYPE_SINT64: return CIMValue(Sint64(n));
    case CIMTYPE_DATETIME: return CIMValue(CIMDateTime("20260101120000.000000+000"));
    case CIMTYPE_STRING: return CIMValue(String::fromUtf8(text));
    default: return CIMValue(p.type, false);
    }
}

CIMInstance volume(const ClassDecl& cls, Uint32 n)
{
    // Keys and the first properties of the class up to 40, as the module
    // sets about that many.
    CIMInstance v{CIMName(kVolumeClass)};
    Uint32 set = 0;
    for (const PropertyDecl& p : cls.properties())
    {
        if (p.isReference() || (!p.isKey && set >= 40))
            continue;
        ++set;
        CIMValue value = sampleValue(p, n);
        if (p.name == "CreationClassName")
            value = CIMValue(String(kVolumeClass));
        else if (p.name == "SystemCreationClassName")
            value = CIMValue(String("ORV_Storage_ComputerSystem"));
        else if (p.name == "SystemName")
            value = CIMValue(String("ORV+1234567890"));
        else if (p.name == "DeviceID")
            value = CIMValue(String::fromUtf8("LDEV" + std::to_string(n)));
        v.addProperty(CIMProperty(CIMName(String::fromUtf8(p.name)), value));
    }
    return v;
}

std::string envelope(const std::string& op, const std::string& params)
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?><CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">"
           "<MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ><IMETHODCALL NAME=\"" + op + "\">"
           "<LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"orv\"/></LOCALNAMESPACEPATH>"
           + params + "</IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>";
}

CIMXmlOperationHandler::Request request(const std::string& op, const std::string& params)
{
    CIMXmlOperationHandler::Request r;
    r.httpMethod = "POST";
    r.contentType = "application/xml; charset=utf-8";
    r.headers = {{"CIMOperation", "MethodCall"}, {"CIMMethod", op}, {"CIMObject", "root%2Forv"}};
    r.body = envelope(op, params);
    return r;
}

void measure(const char* what, const char* how, const CIMXmlOperationHandler& handler,
    const CIMXmlOperationHandler::Request& req)
{
    ::malloc_trim(0);
    const bool reset = resetPeak();
    const long before = statusKb("VmHWM");
    const auto start = std::chrono::steady_clock::now();
    size_t bytes = 0;
    int status = 0;
    {
        CIMXmlOperationHandler::Response r = handler.handle(req);
        bytes = r.textSize();
        status = r.status;
        if (r.bodyParts.empty() && r.body.find("<ERROR") != std::string::npos)
            status = -1;
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const long after = statusKb("VmHWM");
    std::printf("%-24s %-9s %8.3f s %9.2f MB answer  peak +%7.1f MB%s%s\n", what, how, seconds,
        bytes / 1048576.0, (after - before) / 1024.0, reset ? "" : " (peak could not be reset)",
        status == 200 ? "" : "  ANSWER FAILED");
}

} // namespace

int main(int argc, char** argv)
{
    const Uint32 count = argc > 1 ? Uint32(std::strtoul(argv[1], nullptr, 10)) : 8192;
    if (count == 0)
    {
        std::cerr << "usage: bench_enumerate [volumes > 0]\n";
        return 2;
    }
    char pattern[] = "/tmp/bench-enumerate-XXXXXX";
    if (!::mkdtemp(pattern))
    {
        std::perror("mkdtemp");
        return 1;
    }
    const std::string dir = pattern;
    int rc = 0;
    try
    {
        SchemaManager schema;
        schema.loadDirectory(std::string(TEST_SOURCE_DIR) + "/schema");
        const ClassDecl* volumeClass = schema.findClass(kNamespace, kVolumeClass);
        if (!volumeClass || !schema.findClass(kNamespace, kPoolClass) || !schema.findClass(kNamespace, kAllocatedClass))
            throw std::runtime_error("the schema lacks the volume, pool or allocation class");
        Repository repository(dir + "/repository", schema);
        ProviderRegistrationManager registration;
        ProviderManager providers(dir);
        OperationDispatcher dispatcher(schema, repository, registration, providers);
        ServerCIMOMHandleRep client(dispatcher, Caller::Client);

        const CIMNamespaceName ns(kNamespace);
        const auto loadStart = std::chrono::steady_clock::now();
        CIMInstance pool{CIMName(kPoolClass)};
        pool.addProperty(CIMProperty(CIMName("InstanceID"), CIMValue(String("ORV+1234567890+POOL+0"))));
        const CIMObjectPath poolPath = repository.createInstance(ns, pool);
        repository.beginTransaction(ns);
        for (Uint32 i = 0; i < count; ++i)
        {
            const CIMObjectPath v = repository.createInstance(ns, volume(*volumeClass, i));
            CIMInstance link{CIMName(kAllocatedClass)};
            link.addProperty(CIMProperty(CIMName("Antecedent"), CIMValue(poolPath)));
            link.addProperty(CIMProperty(CIMName("Dependent"), CIMValue(v)));
            repository.createInstance(ns, link);
        }
        repository.commitTransaction();
        std::printf("loaded %u volumes (40 of their class's %zu properties set) in %.2f s; resident %.1f MB\n",
            count, volumeClass->properties().size(),
            std::chrono::duration<double>(std::chrono::steady_clock::now() - loadStart).count(),
            statusKb("VmRSS") / 1024.0);

        const CIMXmlOperationHandler arrays(schema, client, "benchhost");
        const CIMXmlOperationHandler streamed(schema, client, "benchhost", &dispatcher);
        const std::string poolName = "<IPARAMVALUE NAME=\"ObjectName\"><INSTANCENAME CLASSNAME=\"" + std::string(kPoolClass)
            + "\"><KEYBINDING NAME=\"InstanceID\"><KEYVALUE VALUETYPE=\"string\">ORV+1234567890+POOL+0</KEYVALUE>"
              "</KEYBINDING></INSTANCENAME></IPARAMVALUE>";
        const std::string className = "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"" + std::string(kVolumeClass)
            + "\"/></IPARAMVALUE>";
        const struct
        {
            const char* what;
            CIMXmlOperationHandler::Request req;
        } answers[] = {
            {"EnumerateInstances", request("EnumerateInstances", className)},
            {"EnumerateInstanceNames", request("EnumerateInstanceNames", className)},
            {"Associators", request("Associators", poolName)},
            {"AssociatorNames", request("AssociatorNames", poolName)},
            {"References", request("References", poolName)},
        };
        for (const auto& a : answers)
        {
            measure(a.what, "arrays", arrays, a.req);
            measure(a.what, "streamed", streamed, a.req);
        }
    }
    catch (const Exception& e)
    {
        std::cerr << "bench_enumerate: " << e.getMessage().toUtf8() << "\n";
        rc = 1;
    }
    catch (const std::exception& e)
    {
        std::cerr << "bench_enumerate: " << e.what() << "\n";
        rc = 1;
    }
    std::error_code ignored;
    std::filesystem::remove_all(dir, ignored);
    return rc;
}
