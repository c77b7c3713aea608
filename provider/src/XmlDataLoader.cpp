#include "XmlDataLoader.h"

#include <vector>

#include "DataflowSource.h"
#include "SmisProvider.h"
#include "SmisTrace.h"

namespace orvsmis {

const char* const XmlDataLoader::m_className = "XmlDataLoader";

Pegasus::CIMValue XmlDataLoader::Invoke(InvokeMethodArgs& args, Pegasus::Array<Pegasus::CIMParamValue>&) {
    const std::string method = args.methodName.getString().toUtf8();
    if (method == "Load") {
        std::string path;
        std::vector<int> types;
        for (Pegasus::Uint32 i = 0; i < args.inParameters.size(); ++i) {
            const Pegasus::CIMParamValue& parameter = args.inParameters[i];
            const Pegasus::CIMValue value = parameter.getValue();
            const std::string name = parameter.getParameterName().toUtf8();
            if (value.isNull()) continue;
            if (name == "filePath" && value.getType() == Pegasus::CIMTYPE_STRING && !value.isArray()) {
                Pegasus::String text;
                value.get(text);
                path = text.toUtf8();
            } else if (name == "dataType" && value.getType() == Pegasus::CIMTYPE_UINT16 && value.isArray()) {
                Pegasus::Array<Pegasus::Uint16> list;
                value.get(list);
                for (Pegasus::Uint32 j = 0; j < list.size(); ++j) types.push_back(list[j]);
            }
        }
        DataflowFileSource source(GetDataFlowService());
        const bool loaded = source.LoadDataFromFile(path, types, true);
        return Pegasus::CIMValue(Pegasus::Uint32(loaded ? 0 : 4));
    }
    if (method == "Unload") {
        GetProvider()->Clean();
        return Pegasus::CIMValue(Pegasus::Uint32(0));
    }
    return Pegasus::CIMValue(Pegasus::Uint32(1));
}

}  // namespace orvsmis
