#include "RegisteredProfile.h"

#include <strings.h>

#include <vector>

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Constants.h>
#include <Pegasus/Common/Exception.h>

#include "Association.h"
#include "CimHandle.h"
#include "MC.h"
#include "RepositoryCleaner.h"
#include "ServerCIMXMLCommunicationMechanism.h"
#include "ServerNamespace.h"
#include "ServerObjectManager.h"
#include "ServerSystem.h"
#include "Singleton.h"
#include "SmisProvider.h"
#include "SmisTrace.h"
#include "SoftwareIdentity.h"

using namespace Pegasus;

namespace orvsmis {

const ProfileInfo RegisteredProfile::PROFILES[] = {
    {"SMI-S", "1.6.1", ProfileInfo::STANDARD, 11},
    {"Profile Registration", "1.0.0", ProfileInfo::PROFILE, 11},
    {"Array", "1.6.0", ProfileInfo::PROFILE, 11},
    {"Server", "1.6.0", ProfileInfo::PROFILE, 11},
    {"Disk Drive Lite", "1.6.0", ProfileInfo::SUBPROFILE, 11},
    {"Extent Composition", "1.6.0", ProfileInfo::SUBPROFILE, 11},
    {"Location", "1.4.0", ProfileInfo::SUBPROFILE, 11},
    {"Software", "1.4.0", ProfileInfo::SUBPROFILE, 11},
    {"Copy Services", "1.5.0", ProfileInfo::SUBPROFILE, 11},
    {"Masking and Mapping", "1.4.0", ProfileInfo::SUBPROFILE, 11},
    {"Block Services", "1.6.1", ProfileInfo::SUBPROFILE, 11},
    {"Physical Package", "1.5.0", ProfileInfo::SUBPROFILE, 11},
    {"Health", "1.2.0", ProfileInfo::SUBPROFILE, 11},
    {"Multiple Computer System", "1.2.0", ProfileInfo::SUBPROFILE, 11},
    {"Job Control", "1.5.0", ProfileInfo::SUBPROFILE, 11},
    {"Thin Provisioning", "1.4.0", ProfileInfo::SUBPROFILE, 11},
    {"FC Target Ports", "1.4.0", ProfileInfo::SUBPROFILE, 11},
    {"iSCSI Target Ports", "1.6.0", ProfileInfo::SUBPROFILE, 11},
    {"Indication", "1.5.0", ProfileInfo::SUBPROFILE, 11},
};
const int RegisteredProfile::PROFILE_COUNT = static_cast<int>(sizeof(PROFILES) / sizeof(PROFILES[0]));

const ProfilePair RegisteredProfile::PAIRS[] = {
    {"Array", "Disk Drive Lite"},
    {"Array", "Extent Composition"},
    {"Array", "Location"},
    {"Array", "Software"},
    {"Array", "Copy Services"},
    {"Array", "Masking and Mapping"},
    {"Array", "Block Services"},
    {"Array", "Physical Package"},
    {"Array", "Health"},
    {"Array", "Multiple Computer System"},
    {"Array", "Job Control"},
    {"Array", "Thin Provisioning"},
    {"Array", "FC Target Ports"},
    {"Array", "iSCSI Target Ports"},
    {"Array", "Indication"},
    {"Block Services", "Job Control"},
    {"Block Services", "Extent Composition"},
    {"Server", "Indication"},
    {"Copy Services", "Block Services"},
    {"Copy Services", "Job Control"},
};
const int RegisteredProfile::PAIR_COUNT = static_cast<int>(sizeof(PAIRS) / sizeof(PAIRS[0]));

std::mutex RegisteredProfile::m_lock;
CIMObjectPath RegisteredProfile::m_opRegArray;
CIMObjectPath RegisteredProfile::m_opAssocToCS;

namespace {

const CIMNamespaceName& interop() { return PEGASUS_NAMESPACENAME_INTEROP; }

CIMObjectPath inInterop(const CIMObjectPath& path) {
    CIMObjectPath copy(path);
    copy.setNameSpace(interop());
    return copy;
}

void rollBack(CimHandle* handle) {
    try {
        handle->rollBackTransaction();
    } catch (...) {
        SMIS_TRACE(LEVEL1, "roll back failed.");
    }
}

}  // namespace

bool RegisteredProfile::IsRegistered(const ProfileInfo& profile, bool copyServiceEnabled) {
    return copyServiceEnabled || ::strcasecmp(profile.name, "Copy Services") != 0;
}

String RegisteredProfile::InstanceID(const char* name, const char* version) {
    return MC::ToString(std::string("SNIA.") + name + "." + version);
}

CIMName RegisteredProfile::ProfileClassName(const ProfileInfo& profile) {
    return MC::ClassName(profile.kind == ProfileInfo::SUBPROFILE ? "RegisteredSubProfile" : "RegisteredProfile");
}

CIMInstance RegisteredProfile::WrapInstance(const ProfileInfo& profile) {
    CIMInstance instance(ProfileClassName(profile));
    instance.addProperty(CIMProperty(CIMName("InstanceID"), CIMValue(InstanceID(profile.name, profile.version))));
    instance.addProperty(CIMProperty(CIMName("RegisteredOrganization"), CIMValue(Uint16(profile.organization))));
    instance.addProperty(CIMProperty(CIMName("RegisteredName"), CIMValue(MC::ToString(profile.name))));
    instance.addProperty(CIMProperty(CIMName("RegisteredVersion"), CIMValue(MC::ToString(profile.version))));
    Array<Uint16> advertise;
    advertise.append(3);  // SLP
    instance.addProperty(CIMProperty(CIMName("AdvertiseTypes"), CIMValue(advertise)));
    instance.setPath(WrapReference(profile));
    return instance;
}

CIMObjectPath RegisteredProfile::WrapReference(const ProfileInfo& profile) {
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("InstanceID"), CIMValue(InstanceID(profile.name, profile.version))));
    return CIMObjectPath(String(), interop(), ProfileClassName(profile), keys);
}

CIMObjectPath RegisteredProfile::GetArrayProfilePath() {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_opRegArray;
}

CIMObjectPath RegisteredProfile::GetArrayAssociationPath() {
    std::lock_guard<std::mutex> guard(m_lock);
    return m_opAssocToCS;
}

void RegisteredProfile::removeEarlierContent(const OperationContext& context) {
    // A restart finds what the last start wrote: the profiles are written
    // anew, so that they always match this module's configuration.
    const std::string ns = MC::ToStd(interop().getString());
    for (int i = 0; i < RepositoryCleaner::INTEROP_CLASS_COUNT; ++i)
        RepositoryCleaner::CleanInstancesByName(context, ns, RepositoryCleaner::INTEROP_CLASSES[i]);
}

CIMObjectPath RegisteredProfile::objectManagerPath(const OperationContext& context) {
    CimHandle* handle = Singleton<CimHandle>::Instance();
    const CIMName managerClass("CIM_ObjectManager");
    Array<CIMObjectPath> managers;
    handle->EnumerateInstanceNames(context, interop(), managerClass, managers);
    if (managers.size() == 0) {
        // A server that does not describe itself: the module's own view of
        // it stands in, so that the "Server" profile has its object manager.
        SMIS_TRACE(LEVEL2, "Info[ RegisteredProfile ] : the server has no object manager, the module describes it");
        ServerSystem system;
        const CIMObjectPath systemPath = system.Create(context);
        ServerObjectManager manager;
        const CIMObjectPath managerPath = manager.Create(context, systemPath);
        ServerNamespace nameSpace;
        nameSpace.Create(context, systemPath, managerPath, MC::ToStd(interop().getString()));
        nameSpace.Create(context, systemPath, managerPath, MC::ToStd(MC::Namespace().getString()));
        ServerCIMXMLCommunicationMechanism mechanism;
        mechanism.Create(context, systemPath, managerPath);
        return inInterop(managerPath);
    }
    // The server's own object manager comes first; a second one can only be
    // the module's, left by a server that described itself only later.
    for (Uint32 i = 0; i < managers.size(); ++i)
        if (managers[i].getClassName().equal(managerClass)) return inInterop(managers[i]);
    return inInterop(managers[0]);
}

CIMObjectPath RegisteredProfile::Create(DataEventArgs* args) {
    if (args == nullptr) throw CIMException(CIM_ERR_INVALID_PARAMETER, "RegisteredProfile::Create without arguments");
    const OperationContext& context = args->context;
    CimHandle* handle = Singleton<CimHandle>::Instance();
    const bool copyService = SMISProvider::m_bEnableCopyService;
    ProfileMap profiles;
    handle->beginTransaction(interop());
    try {
        removeEarlierContent(context);
        for (int i = 0; i < PROFILE_COUNT; ++i) {
            if (!IsRegistered(PROFILES[i], copyService)) {
                SMIS_TRACE(LEVEL3, "Info[ RegisteredProfile ] : %s is not offered, the copy service is off",
                           PROFILES[i].name);
                continue;
            }
            const CIMObjectPath path = handle->CreateInstance(context, interop(), WrapInstance(PROFILES[i]));
            profiles[PROFILES[i].name] = inInterop(path);
        }
        for (int i = 0; i < PAIR_COUNT; ++i) {
            ProfileMap::const_iterator antecedent = profiles.find(PAIRS[i].antecedent);
            ProfileMap::const_iterator dependent = profiles.find(PAIRS[i].dependent);
            if (antecedent == profiles.end() || dependent == profiles.end()) continue;
            Association::CreateAssociation(context, SubProfileRequiresProfile::FORM, antecedent->second,
                                           dependent->second, std::vector<Property>(), interop());
        }
        const CIMObjectPath manager = objectManagerPath(context);
        ElementConformsToProfile::Create(context, profiles["SMI-S"], manager, interop());
        ElementConformsToProfile::Create(context, profiles["Server"], manager, interop());
        SoftwareIdentity::Create(context, profiles);
        handle->commitTransaction();
    } catch (const CIMException& e) {
        SMIS_TRACE(LEVEL1, "Error[ %s ] : %s ,%s", cimStatusCodeToString(e.getCode()),
                   MC::ToStd(e.getMessage()).c_str(), "Create RegisteredProfile Instance failed.");
        rollBack(handle);
        throw;
    } catch (...) {
        SMIS_TRACE(LEVEL1, "Error[ RegisteredProfile ] : %s", "Create RegisteredProfile Instance failed.");
        rollBack(handle);
        throw;
    }
    std::lock_guard<std::mutex> guard(m_lock);
    m_opRegArray = profiles["Array"];
    m_opAssocToCS = CIMObjectPath();  // removed with the earlier content
    SMIS_TRACE(LEVEL2, "Info[ RegisteredProfile ] : %u registered profiles written", unsigned(profiles.size()));
    return m_opRegArray;
}

void RegisteredProfile::CreateArrayAssociation(const ParentArgs& args) {
    std::lock_guard<std::mutex> guard(m_lock);
    if (m_opRegArray.getClassName().isNull()) {
        SMIS_TRACE(LEVEL3, "Info[ RegisteredProfile ] : no registered profiles, the array is not tied to them");
        return;
    }
    // The array lives in the provider's namespace, the profile here: the
    // reference names its namespace so that clients can follow it.
    CIMObjectPath element(args.path);
    if (element.getNameSpace().isNull()) element.setNameSpace(MC::Namespace());
    const CIMObjectPath key = inInterop(Association::KeyPath(ElementConformsToProfile::FORM, m_opRegArray, element));
    try {
        ElementConformsToProfile::Create(args.context, m_opRegArray, element, interop());
    } catch (const CIMException& e) {
        // Left by a load that was rolled back after the tie was written.
        if (e.getCode() != CIM_ERR_ALREADY_EXISTS) throw;
    }
    m_opAssocToCS = key;
}

void RegisteredProfile::ConnectToArray(ParentArgs& args) {
    RegisteredProfile profile;
    profile.CreateArrayAssociation(args);
}

void RegisteredProfile::OnArrayDeleted(ParentArgs& args) {
    (void)args;
    DisconnectToArray();
}

void RegisteredProfile::DisconnectToArray() {
    std::lock_guard<std::mutex> guard(m_lock);
    if (m_opAssocToCS.getClassName().isNull()) return;
    try {
        const OperationContext context;
        Singleton<CimHandle>::Instance()->DeleteInstance(context, interop(), m_opAssocToCS);
    } catch (const CIMException& e) {
        if (e.getCode() != CIM_ERR_NOT_FOUND) {
            SMIS_TRACE(LEVEL1, "Error[ %s ] : %s ,%s", cimStatusCodeToString(e.getCode()),
                       MC::ToStd(e.getMessage()).c_str(), "Delete ElementConformsToProfile association class failed.");
            return;  // kept: the next clean-up tries again
        }
    } catch (const Exception& e) {
        SMIS_TRACE(LEVEL1, "Error[ DisconnectToArray ] : %s", MC::ToStd(e.getMessage()).c_str());
        return;
    } catch (const std::exception& e) {
        SMIS_TRACE(LEVEL1, "Error[ DisconnectToArray ] : %s", e.what());
        return;
    }
    m_opAssocToCS = CIMObjectPath();
}

}  // namespace orvsmis
