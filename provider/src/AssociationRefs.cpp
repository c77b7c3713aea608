#include "AssociationRefs.h"

#include <Pegasus/Common/String.h>

#include "CimHandle.h"
#include "MC.h"
#include "Model.h"
#include "Singleton.h"

using namespace Pegasus;

namespace orvsmis {

Array<CIMObjectPath> AssociationRefs::Find(const OperationContext& context, const CIMNamespaceName& nameSpace,
                                           const CIMObjectPath& path, const char* shortName) {
    const CIMName className = MC::ClassName(shortName);
    Array<CIMObjectPath> found;
    Singleton<CimHandle>::Instance()->ReferenceNames(context, nameSpace, path, className, String(), found);
    Array<CIMObjectPath> out;
    for (Uint32 i = 0; i < found.size(); ++i)
        if (found[i].getClassName().equal(className)) out.append(found[i]);
    return out;
}

Uint32 AssociationRefs::Delete(const OperationContext& context, const CIMNamespaceName& nameSpace,
                               const CIMObjectPath& path, const char* shortName) {
    Array<CIMObjectPath> references = Find(context, nameSpace, path, shortName);
    CimHandle* handle = Singleton<CimHandle>::Instance();
    for (Uint32 i = 0; i < references.size(); ++i) handle->DeleteInstance(context, nameSpace, references[i]);
    return references.size();
}

bool AssociationRefs::End(const CIMObjectPath& association, const char* role, CIMObjectPath& out) {
    const Array<CIMKeyBinding>& keys = association.getKeyBindings();
    for (Uint32 i = 0; i < keys.size(); ++i) {
        if (!keys[i].getName().equal(CIMName(role)) || keys[i].getType() != CIMKeyBinding::REFERENCE) continue;
        out = Model::AdjustObjectPath(CIMObjectPath(keys[i].getValue()));
        return true;
    }
    return false;
}

}  // namespace orvsmis
