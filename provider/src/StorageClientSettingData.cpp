#include "StorageClientSettingData.h"

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include "ArrayRawData.h"
#include "CimHandle.h"
#include "ConfigManager.h"
#include "ElementSettingData.h"
#include "MC.h"
#include "Model.h"
#include "Singleton.h"
#include "SmisTrace.h"

using namespace Pegasus;

namespace orvsmis {

const _sPlatformInfo StorageClientSettingData::m_platforms[11] = {
    {"M4", 1, "MAINOS-4"}, {"M2", 1, "MAINOS-2"}, {"WN", 15, ""},  {"CX", 3, ""},
    {"LX", 14, ""},        {"AX", 9, ""},         {"NX", 4, ""},   {"G8", 1, "GCOS8"},
    {"VX", 1, "VECTOR-UX"}, {"DF", 1, "DEFAULT"}, {"VW", 19, ""},
};

std::map<std::string, CIMObjectPath> StorageClientSettingData::m_vOpMap;

void StorageClientSettingData::OnCreate(ParentArgs& args) { Create(args); }

void StorageClientSettingData::OnDelete(ParentArgs& args) { Delete(args); }

CIMInstance StorageClientSettingData::WrapInstance(ParentArgs& args, const _sPlatformInfo& platform) {
    const ArrayRawData* array = dynamic_cast<const ArrayRawData*>(args.newData);
    if (array == nullptr) throw CIMException(CIM_ERR_FAILED, "dynamic_cast ArrayRawData error.");
    ConfigManager* config = Singleton<ConfigManager>::Instance();
    // Hosts find their platform by the last two characters of this id.
    String id = MC::ToString(config->GetVendor() + "." + config->GetBrand() + " : " + array->name + "-");
    id.append(platform.code);

    Array<Uint16> clientTypes;
    clientTypes.append(platform.clientType);
    if (platform.code == "WN") {
        clientTypes.append(21);
        clientTypes.append(22);
    }
    Array<String> descriptions;
    descriptions.append(platform.description);

    CIMInstance instance(MC::ClassName("StorageClientSettingData"));
    instance.addProperty(CIMProperty(CIMName("InstanceID"), CIMValue(id)));
    instance.addProperty(CIMProperty(CIMName("ElementName"), CIMValue(id)));
    instance.addProperty(CIMProperty(CIMName("ClientTypes"), CIMValue(clientTypes)));
    instance.addProperty(CIMProperty(CIMName("OtherClientTypeDescriptions"), CIMValue(descriptions)));
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("InstanceID"), id, CIMKeyBinding::STRING));
    CIMObjectPath path;
    Model::WrapObjectPath(MC::ClassName("StorageClientSettingData"), keys, path);
    instance.setPath(path);
    return instance;
}

CIMObjectPath StorageClientSettingData::Create(ParentArgs& args) {
    CimHandle* handle = Singleton<CimHandle>::Instance();
    CIMObjectPath last;
    for (unsigned i = 0; i < m_platformCount; ++i) {
        CIMInstance instance = WrapInstance(args, m_platforms[i]);
        last = Model::AdjustObjectPath(instance.getPath());
        try {
            handle->CreateInstance(args.context, MC::Namespace(), instance);
            ElementSettingData::Create(args.context, args.path, last, 0, 0, 0);
        } catch (const CIMException& e) {
            // Nothing deletes the platforms with their array: an array that
            // comes back finds its platforms and their links still there.
            if (e.getCode() != CIM_ERR_ALREADY_EXISTS) throw;
            SMIS_TRACE(LEVEL4, "%s", ("platform kept: " + MC::ToStd(last.toString())).c_str());
        }
        m_vOpMap[MC::ToStd(m_platforms[i].code)] = last;
    }
    SMIS_TRACE(LEVEL3, "%s process completed.", "create storage client setting data");
    return last;
}

void StorageClientSettingData::Delete(ParentArgs& args) {
    CimHandle* handle = Singleton<CimHandle>::Instance();
    for (unsigned i = 0; i < m_platformCount; ++i) {
        CIMObjectPath path = GetObjectPath(m_platforms[i].code);
        Array<CIMObjectPath> references;
        handle->ReferenceNames(args.context, MC::Namespace(), path, MC::ClassName("ElementSettingData"),
                               String("SettingData"), references);
        if (references.size() > 0) handle->DeleteInstance(args.context, MC::Namespace(), references[0]);
        handle->DeleteInstance(args.context, MC::Namespace(), path);
    }
    m_vOpMap.clear();
    SMIS_TRACE(LEVEL3, "%s process completed.", "delete storage client setting data");
}

CIMObjectPath StorageClientSettingData::GetObjectPath(const String& code) {
    std::map<std::string, CIMObjectPath>::const_iterator it = m_vOpMap.find(MC::ToStd(code));
    if (it == m_vOpMap.end()) throw CIMException(CIM_ERR_FAILED, "GetObjectPath fail.");
    return it->second;
}

}  // namespace orvsmis
