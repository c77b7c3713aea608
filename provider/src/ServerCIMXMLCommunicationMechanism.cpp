#include "ServerCIMXMLCommunicationMechanism.h"

#include <vector>

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Constants.h>
#include <Pegasus/Common/Exception.h>

#include "Association.h"
#include "CimHandle.h"
#include "MC.h"
#include "ServerObjectManager.h"
#include "Singleton.h"
#include "SmisTrace.h"

using namespace Pegasus;

namespace orvsmis {

namespace {

void traceFailure(const char* what, const CIMException& e) {
    SMIS_TRACE(LEVEL2, "Failed to %s ServerCIMXMLCommunicationMechanism instance.ErrorCode=%d,ErrorMessage=\"%s\"",
               what, int(e.getCode()), MC::ToStd(e.getMessage()).c_str());
}

String required(const CIMInstance& instance, const char* property) {
    String value;
    if (!MC::GetString(instance, property, value) || value.size() == 0) {
        const std::string text =
            std::string("ServerCIMXMLCommunicationMechanism::WrapInstance execution failed.can't find system ") +
            property;
        SMIS_TRACE(LEVEL2, "%s", text.c_str());
        throw CIMException(CIM_ERR_FAILED, MC::ToString(text));
    }
    return value;
}

void deleteReferences(const OperationContext& context, const CIMObjectPath& path, const char* shortName) {
    CimHandle* handle = Singleton<CimHandle>::Instance();
    Array<CIMObjectPath> references;
    handle->ReferenceNames(context, PEGASUS_NAMESPACENAME_INTEROP, path, MC::ClassName(shortName),
                           String("Dependent"), references);
    for (Uint32 i = 0; i < references.size(); ++i)
        handle->DeleteInstance(context, PEGASUS_NAMESPACENAME_INTEROP, references[i]);
}

}  // namespace

CIMInstance ServerCIMXMLCommunicationMechanism::WrapInstance(const OperationContext& context,
                                                             const CIMObjectPath& systemPath,
                                                             const CIMObjectPath& managerPath) {
    (void)managerPath;
    const CIMInstance system = Singleton<CimHandle>::Instance()->GetSmisInstance(
        context, PEGASUS_NAMESPACENAME_INTEROP, systemPath, false, false, false, CIMPropertyList());
    const String systemClass = required(system, "CreationClassName");
    const String systemName = required(system, "Name");
    const std::string address = ServerObjectManager::Name(MC::ToStd(systemName), ServerObjectManager::getPortNumber());

    const CIMName className = MC::ClassName("CIMXMLCommunicationMechanism");
    CIMInstance instance(className);
    instance.addProperty(CIMProperty(CIMName("SystemCreationClassName"), CIMValue(systemClass)));
    instance.addProperty(CIMProperty(CIMName("SystemName"), CIMValue(systemName)));
    instance.addProperty(CIMProperty(CIMName("CreationClassName"), CIMValue(className.getString())));
    instance.addProperty(CIMProperty(CIMName("Name"), CIMValue(MC::ToString(address))));
    instance.addProperty(CIMProperty(CIMName("ElementName"), CIMValue(String("CIM-XML over HTTP"))));
    instance.addProperty(CIMProperty(CIMName("Description"), CIMValue(MC::ToString(address))));  // where clients go
    Array<Uint16> status;
    status.append(2);  // OK
    instance.addProperty(CIMProperty(CIMName("OperationalStatus"), CIMValue(status)));
    instance.addProperty(CIMProperty(CIMName("CommunicationMechanism"), CIMValue(Uint16(2))));  // CIM-XML
    Array<Uint16> profiles;
    Array<String> profileNames;
    const Uint16 profileCodes[] = {2, 3, 5, 6, 9};
    const char* const profileTexts[] = {"Basic Read", "Basic Write", "Instance Manipulation",
                                        "Association Traversal", "Indications"};
    for (int i = 0; i < 5; ++i) {
        profiles.append(profileCodes[i]);
        profileNames.append(String(profileTexts[i]));
    }
    instance.addProperty(CIMProperty(CIMName("FunctionalProfilesSupported"), CIMValue(profiles)));
    instance.addProperty(CIMProperty(CIMName("FunctionalProfileDescriptions"), CIMValue(profileNames)));
    instance.addProperty(CIMProperty(CIMName("MultipleOperationsSupported"), CIMValue(false)));
    Array<Uint16> authentication;
    authentication.append(3);  // Basic
    instance.addProperty(CIMProperty(CIMName("AuthenticationMechanismsSupported"), CIMValue(authentication)));
    instance.addProperty(CIMProperty(CIMName("Version"), CIMValue(String("1.0"))));
    instance.addProperty(CIMProperty(CIMName("CIMXMLProtocolVersion"), CIMValue(Uint16(2))));  // 1.1
    Array<Uint16> advertise;
    advertise.append(2);  // not advertised
    instance.addProperty(CIMProperty(CIMName("AdvertiseTypes"), CIMValue(advertise)));

    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("SystemCreationClassName"), CIMValue(systemClass)));
    keys.append(CIMKeyBinding(CIMName("SystemName"), CIMValue(systemName)));
    keys.append(CIMKeyBinding(CIMName("CreationClassName"), CIMValue(className.getString())));
    keys.append(CIMKeyBinding(CIMName("Name"), CIMValue(MC::ToString(address))));
    instance.setPath(CIMObjectPath(String(), PEGASUS_NAMESPACENAME_INTEROP, className, keys));
    return instance;
}

CIMObjectPath ServerCIMXMLCommunicationMechanism::Create(const OperationContext& context,
                                                         const CIMObjectPath& systemPath,
                                                         const CIMObjectPath& managerPath) {
    try {
        CIMObjectPath path = Singleton<CimHandle>::Instance()->CreateInstance(
            context, PEGASUS_NAMESPACENAME_INTEROP, WrapInstance(context, systemPath, managerPath));
        path.setNameSpace(PEGASUS_NAMESPACENAME_INTEROP);
        Association::CreateAssociation(context, ServerHostedAccessPoint::FORM, systemPath, path,
                                       std::vector<Property>(), PEGASUS_NAMESPACENAME_INTEROP);
        Association::CreateAssociation(context, ServerCommMechanismForManager::FORM, managerPath, path,
                                       std::vector<Property>(), PEGASUS_NAMESPACENAME_INTEROP);
        return path;
    } catch (const CIMException& e) {
        traceFailure("create", e);
        throw;
    }
}

void ServerCIMXMLCommunicationMechanism::Delete(const OperationContext& context, const CIMObjectPath& mechanismPath) {
    try {
        deleteReferences(context, mechanismPath, "HostedAccessPoint");
        deleteReferences(context, mechanismPath, "CommMechanismForManager");
        Singleton<CimHandle>::Instance()->DeleteInstance(context, PEGASUS_NAMESPACENAME_INTEROP, mechanismPath);
    } catch (const CIMException& e) {
        if (e.getCode() == CIM_ERR_NOT_FOUND) return;
        traceFailure("delete", e);
        throw;
    }
}

}  // namespace orvsmis
