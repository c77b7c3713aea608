#include "Model.h"

#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/System.h>
#include <Pegasus/Provider/ProviderException.h>

#include "MC.h"

using namespace Pegasus;

namespace orvsmis {

CIMObjectPath Model::Create(DataEventArgs*) {
    throw CIMNotSupportedException("Create function not support");
}

void Model::Delete(DataEventArgs*) {
    throw CIMNotSupportedException("Delete function not support");
}

void Model::Modify(DataEventArgs*) {
    throw CIMNotSupportedException("Modify function not support");
}

bool Model::Find(const std::string&, const std::string&, CIMObjectPath&) {
    throw CIMNotSupportedException("Find function not support");
}

CIMObjectPath Model::AdjustObjectPath(const CIMObjectPath& path) {
    CIMObjectPath adjusted;
    adjusted.setClassName(path.getClassName());
    adjusted.setKeyBindings(path.getKeyBindings());
    return adjusted;
}

void Model::WrapObjectPath(const CIMName& className, const Array<CIMKeyBinding>& keys, CIMObjectPath& out) {
    out.clear();
    out.setClassName(className);
    out.setKeyBindings(keys);
    out.setHost(System::getHostName());
    out.setNameSpace(MC::Namespace());
}

void Model::WrapAssocObjectPath(const CIMName& className, const std::string& role1, const CIMObjectPath& path1,
                                const std::string& role2, const CIMObjectPath& path2, CIMObjectPath& out) {
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName(MC::ToString(role1)), CIMValue(path1)));
    keys.append(CIMKeyBinding(CIMName(MC::ToString(role2)), CIMValue(path2)));
    WrapObjectPath(className, keys, out);
}

}  // namespace orvsmis
