#include "ModelFactory.h"

#include "ComputerSystem.h"
#include "NonToplevelComputerSystem.h"
#include "RawData.h"

namespace orvsmis {

Model* ModelFactory::CreateModel(int type) {
    switch (type) {
    case RAWDATA_ARRAY: return new ComputerSystem();
    case RAWDATA_DAC: return new NonToplevelComputerSystem();
    default: return nullptr;
    }
}

}  // namespace orvsmis
