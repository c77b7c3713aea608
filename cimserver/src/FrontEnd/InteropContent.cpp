#include <Pegasus/FrontEnd/InteropContent.h>

#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Repository/Repository.h>

namespace Pegasus {

const char* const InteropContent::interopNamespace = "root/interop";

namespace {

const char* const kObjectManagerClass = "CIM_ObjectManager";
const char* const kNamespaceClass = "CIM_Namespace";
const char* const kMechanismClass = "CIM_CIMXMLCommunicationMechanism";
const char* const kSystemClass = "CIM_ComputerSystem";
const char* const kNamespaceInManager = "CIM_NamespaceInManager";
const char* const kCommMechanismForManager = "CIM_CommMechanismForManager";
const char* const kHostedService = "CIM_HostedService";
const char* const kHostedAccessPoint = "CIM_HostedAccessPoint";

void add(CIMInstance& instance, const char* name, const CIMValue& value)
{
    instance.addProperty(CIMProperty(CIMName(name), value));
}

void addString(CIMInstance& instance, const char* name, const std::string& value)
{
    add(instance, name, CIMValue(String::fromUtf8(value)));
}

CIMObjectPath keyPath(const char* className, const std::vector<std::pair<const char*, std::string>>& keys)
{
    Array<CIMKeyBinding> bindings;
    for (const auto& key : keys)
        bindings.append(CIMKeyBinding(CIMName(key.first), String::fromUtf8(key.second), CIMKeyBinding::STRING));
    return CIMObjectPath(String(), CIMNamespaceName(InteropContent::interopNamespace), CIMName(className), bindings);
}

CIMInstance association(const char* className, const CIMObjectPath& antecedent, const CIMObjectPath& dependent)
{
    CIMInstance instance{CIMName(className)};
    instance.addProperty(CIMProperty(CIMName("Antecedent"), CIMValue(antecedent), 0, antecedent.getClassName()));
    instance.addProperty(CIMProperty(CIMName("Dependent"), CIMValue(dependent), 0, dependent.getClassName()));
    return instance;
}

CIMInstance mechanism(const InteropContent::Settings& s, bool secure, const std::string& managerName)
{
    const int port = secure ? s.httpsPort : s.httpPort;
    const std::string address = std::string(secure ? "https://" : "http://") + s.hostName + ":" + std::to_string(port);
    CIMInstance m{CIMName(kMechanismClass)};
    addString(m, "SystemCreationClassName", kSystemClass);
    addString(m, "SystemName", s.hostName);
    addString(m, "CreationClassName", kMechanismClass);
    addString(m, "Name", managerName + "+" + (secure ? "https" : "http") + "+" + std::to_string(port));
    addString(m, "ElementName", std::string("CIM-XML over ") + (secure ? "HTTPS" : "HTTP"));
    addString(m, "Description", address);  // where clients reach it
    add(m, "CommunicationMechanism", CIMValue(Uint16(2)));  // CIM-XML
    Array<Uint16> profiles;
    for (Uint16 p : {2, 3, 5, 6, 9})  // read, write, instance manipulation, associations, indications
        profiles.append(p);
    add(m, "FunctionalProfilesSupported", CIMValue(profiles));
    Array<String> profileNames;
    for (const char* p : {"Basic Read", "Basic Write", "Instance Manipulation", "Association Traversal", "Indications"})
        profileNames.append(String(p));
    add(m, "FunctionalProfileDescriptions", CIMValue(profileNames));
    add(m, "MultipleOperationsSupported", CIMValue(false));
    Array<Uint16> auth;
    auth.append(Uint16(s.authentication ? 3 : 2));  // Basic, or None
    add(m, "AuthenticationMechanismsSupported", CIMValue(auth));
    addString(m, "Version", "1.0");
    add(m, "CIMXMLProtocolVersion", CIMValue(Uint16(2)));
    Array<Uint16> advertise;
    advertise.append(Uint16(2));  // not advertised
    add(m, "AdvertiseTypes", CIMValue(advertise));
    return m;
}

} // namespace

std::vector<CIMInstance> InteropContent::build(const Settings& s)
{
    std::vector<CIMInstance> out;
    const std::string managerName = s.hostName + ":cimserver";

    // The host the object manager and its access points run on.
    CIMInstance host{CIMName(kSystemClass)};
    addString(host, "CreationClassName", kSystemClass);
    addString(host, "Name", s.hostName);
    addString(host, "NameFormat", "Other");  // a host name
    addString(host, "ElementName", s.hostName);
    addString(host, "Description", "Host of the CIM server");
    Array<Uint16> hostStatus;
    hostStatus.append(Uint16(2));  // OK
    add(host, "OperationalStatus", CIMValue(hostStatus));
    out.push_back(host);
    const CIMObjectPath hostPath = keyPath(kSystemClass, {{"CreationClassName", kSystemClass}, {"Name", s.hostName}});

    CIMInstance manager{CIMName(kObjectManagerClass)};
    addString(manager, "SystemCreationClassName", kSystemClass);
    addString(manager, "SystemName", s.hostName);
    addString(manager, "CreationClassName", kObjectManagerClass);
    addString(manager, "Name", managerName);
    addString(manager, "ElementName", "CIM server");
    addString(manager, "Description", "CIM server " + s.serverVersion + " of the ORV storage management provider");
    add(manager, "GatherStatisticalData", CIMValue(false));
    Array<Uint16> status;
    status.append(Uint16(2));  // OK
    add(manager, "OperationalStatus", CIMValue(status));
    add(manager, "Started", CIMValue(true));
    out.push_back(manager);
    const CIMObjectPath managerPath = keyPath(kObjectManagerClass, {{"CreationClassName", kObjectManagerClass},
        {"Name", managerName}, {"SystemCreationClassName", kSystemClass}, {"SystemName", s.hostName}});

    std::vector<CIMObjectPath> namespacePaths;
    for (const std::string& ns : s.namespaces)
    {
        CIMInstance n{CIMName(kNamespaceClass)};
        addString(n, "SystemCreationClassName", kSystemClass);
        addString(n, "SystemName", s.hostName);
        addString(n, "ObjectManagerCreationClassName", kObjectManagerClass);
        addString(n, "ObjectManagerName", managerName);
        addString(n, "CreationClassName", kNamespaceClass);
        addString(n, "Name", ns);
        add(n, "ClassType", CIMValue(Uint16(2)));  // CIM
        addString(n, "ClassTypeVersion", "2.22.0");
        add(n, "ClassInfo", CIMValue(Uint16(0)));
        out.push_back(n);
        namespacePaths.push_back(keyPath(kNamespaceClass, {{"CreationClassName", kNamespaceClass}, {"Name", ns},
            {"ObjectManagerCreationClassName", kObjectManagerClass}, {"ObjectManagerName", managerName},
            {"SystemCreationClassName", kSystemClass}, {"SystemName", s.hostName}}));
    }

    std::vector<CIMObjectPath> mechanismPaths;
    for (int secure = 0; secure < 2; ++secure)
    {
        if (secure ? !s.httpsEnabled : !s.httpEnabled)
            continue;
        CIMInstance m = mechanism(s, secure != 0, managerName);
        out.push_back(m);
        String name;
        m.getProperty(m.findProperty(CIMName("Name"))).getValue().get(name);
        mechanismPaths.push_back(keyPath(kMechanismClass, {{"CreationClassName", kMechanismClass},
            {"Name", name.toUtf8()}, {"SystemCreationClassName", kSystemClass}, {"SystemName", s.hostName}}));
    }

    out.push_back(association(kHostedService, hostPath, managerPath));
    for (const CIMObjectPath& n : namespacePaths)
        out.push_back(association(kNamespaceInManager, managerPath, n));
    for (const CIMObjectPath& m : mechanismPaths)
    {
        out.push_back(association(kCommMechanismForManager, managerPath, m));
        out.push_back(association(kHostedAccessPoint, hostPath, m));
    }
    return out;
}

void InteropContent::write(Repository& repository, const Settings& settings)
{
    const CIMNamespaceName ns(interopNamespace);
    const std::vector<CIMInstance> content = build(settings);
    repository.beginTransaction(ns);
    try
    {
        // What an earlier run wrote goes first: host, ports and namespaces may differ now.
        for (const char* cls : {kHostedAccessPoint, kHostedService, kCommMechanismForManager, kNamespaceInManager,
                                kMechanismClass, kNamespaceClass, kObjectManagerClass, kSystemClass})
        {
            const Array<CIMObjectPath> old = repository.enumerateInstanceNames(ns, CIMName(cls), RepositoryAccess::Joined);
            for (const CIMObjectPath& path : old)
                repository.deleteInstance(ns, path);
        }
        for (const CIMInstance& instance : content)
            repository.createInstance(ns, instance);
        repository.commitTransaction();
    }
    catch (...)
    {
        repository.rollBackTransaction();
        throw;
    }
}

} // namespace Pegasus
