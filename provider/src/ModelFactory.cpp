#include "ModelFactory.h"

#include "DiskDrive.h"
#include "StoragePool.h"
#include "StorageVolume.h"

#include "ComputerSystem.h"
#include "NonToplevelComputerSystem.h"
#include "RawData.h"

namespace orvsmis {

Model* ModelFactory::CreateModel(int type) {
    switch (type) {
    case RAWDATA_ARRAY: return new ComputerSystem();
    case RAWDATA_DAC: return new NonToplevelComputerSystem();
    case RAWDATA_PD: return new DiskDrive();
    case RAWDATA_POOL: return new StoragePool();
    case RAWDATA_LD: return new StorageVolume();
    default: return nullptr;
    }
}

}  // namespace orvsmis
