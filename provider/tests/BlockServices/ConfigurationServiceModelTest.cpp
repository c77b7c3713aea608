// The service instance with its hosting and its capabilities, made and
// removed with the array.

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "../Model/ModelTestSupport.h"

#include "ArrayRawData.h"
#include "CimHandle.h"
#include "MC.h"
#include "StorageConfigurationService.h"
#include "BlockServicesTestSupport.h"

using namespace Pegasus;
using namespace orvsmis;

namespace {

TEST(ConfigurationServiceModel, CreateAndDeleteWithTheArray) {
    blocktest::ModelSettings();
    auto repository = std::make_shared<modeltest::FakeRepository>();
    CIMOMHandle handle(repository);
    Singleton<CimHandle>::Instance()->Initialize(handle);

    ArrayRawData* array = new ArrayRawData();
    array->AddRef();
    array->name = array->arrayId = array->worldWideName = "2000000991000001";
    OperationContext context;
    DataEventArgs event(context, array, nullptr, array->name);
    ComputerSystem system_;
    const CIMObjectPath system = system_.WrapReference(array);
    ParentArgs args(event, system);

    StorageConfigurationService service;
    const CIMObjectPath path = service.Create(args);
    ASSERT_TRUE(repository->has(path));
    CIMInstance instance = repository->get(path);
    String value;
    ASSERT_TRUE(MC::GetString(instance, "Name", value));
    EXPECT_EQ(MC::ToStd(value), "ORV.ORV : default storage configuration service.in.2000000991000001");
    ASSERT_TRUE(MC::GetString(instance, "SystemName", value));
    EXPECT_EQ(MC::ToStd(value), "2000000991000001");
    ASSERT_TRUE(MC::GetString(instance, "SystemCreationClassName", value));
    EXPECT_EQ(MC::ToStd(value), "ORV_Storage_ComputerSystem");
    EXPECT_EQ(repository->count("ORV_Storage_HostedService"), 1u);
    EXPECT_EQ(repository->count("ORV_Storage_StorageConfigurationCapabilities"), 1u);
    EXPECT_EQ(repository->count("ORV_Storage_ElementCapabilities"), 1u);
    EXPECT_EQ(modeltest::canonical(StorageConfigurationService::WrapReference(array)), modeltest::canonical(path));

    service.Delete(args);
    EXPECT_EQ(repository->instances.size(), 0u);

    // A record of another kind is no array.
    RawData* other = RawDataFactory::CreateInstance(RAWDATA_POOL);
    EXPECT_THROW(StorageConfigurationService::WrapInstance(other), CIMException);
    other->Release();
    array->Release();
}

}  // namespace
