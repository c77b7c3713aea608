// The array, its controllers and their redundancy set in the repository.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Association.h"
#include "ComputerSystem.h"
#include "Exception.h"
#include "NonToplevelComputerSystem.h"
#include "RedundancySet.h"
#include "ModelTestSupport.h"

using namespace Pegasus;
using namespace orvsmis;
using modeltest::prop;
using modeltest::propertyNames;
using modeltest::uint16s;

namespace {

typedef std::vector<std::string> Names;
typedef std::vector<Uint16> Status;

const std::string WWN = "2000000991000001";

class ArraySystem : public modeltest::ModelFixture {
protected:
    void TearDown() override {
        for (RawData* record : held) record->Release();
        ModelFixture::TearDown();
    }
    template <class T>
    T* keep(T* record) {
        held.push_back(record);
        return record;
    }
    CIMInstance system(const std::string& name) {
        for (const CIMInstance& i : repository->of("ORV_Storage_ComputerSystem"))
            if (prop<String>(i, "Name").toUtf8() == name) return i;
        ADD_FAILURE() << "no system " << name;
        return CIMInstance();
    }

    std::vector<RawData*> held;
};

std::vector<std::string>* g_events = nullptr;
modeltest::FakeRepository* g_repository = nullptr;
void onCreated(ParentArgs& args) { g_events->push_back("created " + modeltest::canonical(args.path)); }
void onModified(ParentArgs& args) { g_events->push_back("modified " + args.arrayId); }
void onDeleting(ParentArgs& args) {
    g_events->push_back(std::string("deleting, stored: ") + (g_repository->has(args.path) ? "yes" : "no"));
}

TEST_F(ArraySystem, StateMapsFirstMatchFirst) {
    struct Case {
        std::string state;
        Status status;
        Uint16 health;
    };
    const Case cases[] = {
        {"ready", {2}, 5},
        {"attn(fault)", {2, 5}, 10},
        {"fault", {6}, 20},
        {"ready(rebuilding)", {2}, 5},
        {"", {0}, 0},
        {"offline", {0}, 0},
    };
    for (const Case& c : cases) {
        Array<Uint16> status;
        Uint16 health = 99;
        ComputerSystem::MapState(c.state, status, health);
        EXPECT_EQ(c.status, Status(status.begin(), status.end())) << c.state;
        EXPECT_EQ(c.health, health) << c.state;
        NonToplevelComputerSystem::MapState(c.state, status);
        EXPECT_EQ(c.status, Status(status.begin(), status.end())) << c.state;
    }
}

TEST_F(ArraySystem, ArrayInstanceHoldsTheRecordInPropertyOrder) {
    ArrayRawData* array = keep(MakeArray(WWN, "attn"));
    ComputerSystem model;
    CIMInstance instance = model.WrapInstance(array);
    EXPECT_EQ((Names{"CreationClassName", "Name", "ElementName", "NameFormat", "OtherIdentifyingInfo",
                     "IdentifyingDescriptions", "OperationalStatus", "HealthState", "Dedicated", "ResetCapability",
                     "PrimaryOwnerName", "PrimaryOwnerContact", "Description"}),
              propertyNames(instance));
    EXPECT_EQ(String(WWN.c_str()), prop<String>(instance, "Name"));
    EXPECT_EQ(String("ORV.ORV"), prop<String>(instance, "ElementName"));
    EXPECT_EQ(String("WWN"), prop<String>(instance, "NameFormat"));
    Array<String> descriptions = prop<Array<String>>(instance, "IdentifyingDescriptions");
    ASSERT_EQ(1u, descriptions.size());
    EXPECT_EQ(String(("The World Wide Name of Disk Array is " + WWN).c_str()), descriptions[0]);
    EXPECT_EQ((Status{2, 5}), uint16s(instance, "OperationalStatus"));
    EXPECT_EQ(Uint16(10), prop<Uint16>(instance, "HealthState"));
    EXPECT_EQ((Status{3, 15}), uint16s(instance, "Dedicated"));
    EXPECT_EQ(String("lab-array"), prop<String>(instance, "PrimaryOwnerName"));
    EXPECT_EQ(String("ORV.ORV Storage System"), prop<String>(instance, "Description"));
    EXPECT_EQ(2u, instance.getPath().getKeyBindings().size());

    DacRawData* dac = keep(MakeDac(WWN, "00", "ready"));
    try {
        model.WrapInstance(dac);
        ADD_FAILURE() << "no exception";
    } catch (const CIMException& e) {
        EXPECT_EQ(CIM_ERR_INVALID_PARAMETER, e.getCode());
        EXPECT_EQ(String("can not read ArrayRawData! [ComputerSystem::WrapInstance]"), e.getMessage());
    }
    NonToplevelComputerSystem controllers;
    EXPECT_THROW(controllers.WrapReference(array), CIMException);
}

TEST_F(ArraySystem, ArrayLifeInTheRepositoryWithEventsAndIndications) {
    std::vector<std::string> events;
    g_events = &events;
    g_repository = repository.get();
    ComputerSystem::AfterCreated += onCreated;
    ComputerSystem::AfterModified += onModified;
    ComputerSystem::BeforeDeleted += onDeleting;

    ArrayRawData* array = keep(MakeArray(WWN, "ready"));
    DataEventArgs create(context, array, nullptr, WWN);
    ComputerSystem model;
    CIMObjectPath path = model.Create(&create);

    EXPECT_EQ(1u, repository->count("ORV_Storage_ComputerSystem"));
    EXPECT_EQ(String("root/orv"), ComputerSystem::GetPath("").getNameSpace().getString());
    CIMObjectPath found;
    EXPECT_TRUE(model.Find("anything", WWN, found));
    EXPECT_TRUE(repository->has(found));
    // The array's own names replace the configured ones.
    EXPECT_EQ(String("ORV.Vx2000"), prop<String>(system(WWN), "ElementName"));
    EXPECT_EQ(1u, indications.named("CIM_InstCreation").size());

    // A new model name shows at the next change; an unwatched change sends nothing.
    ArrayRawData* renamed = keep(MakeArray(WWN, "ready"));
    renamed->productID = "Vx3000";
    DataEventArgs rename(context, renamed, array, WWN);
    model.Modify(&rename);
    EXPECT_EQ(String("ORV.Vx3000"), prop<String>(system(WWN), "ElementName"));
    EXPECT_TRUE(indications.named("CIM_InstModification").empty());

    ArrayRawData* failing = keep(MakeArray(WWN, "fault"));
    failing->productID = "Vx3000";
    DataEventArgs fail(context, failing, renamed, WWN);
    model.Modify(&fail);
    EXPECT_EQ((Status{6}), uint16s(system(WWN), "OperationalStatus"));
    EXPECT_EQ(Uint16(20), prop<Uint16>(system(WWN), "HealthState"));
    EXPECT_EQ(1u, indications.named("CIM_InstModification").size());

    DataEventArgs remove(context, failing, nullptr, WWN);
    model.Delete(&remove);
    EXPECT_EQ(0u, repository->count("ORV_Storage_ComputerSystem"));
    auto deletions = indications.named("CIM_InstDeletion");
    ASSERT_EQ(1u, deletions.size());
    EXPECT_EQ(String(WWN.c_str()), prop<String>(prop<CIMInstance>(deletions[0], "SourceInstance"), "Name"));

    EXPECT_EQ((Names{"created " + modeltest::canonical(path), "modified " + WWN, "modified " + WWN,
                     "deleting, stored: yes"}),
              events);
    g_events = nullptr;
    g_repository = nullptr;
}

TEST_F(ArraySystem, ControllerNamesAreTheArrayIdAndTheDecimalNumber) {
    EXPECT_EQ("A-10", NonToplevelComputerSystem::ControllerName("A", "0a"));
    EXPECT_EQ("A-31", NonToplevelComputerSystem::ControllerName("A", "1F"));
    EXPECT_EQ("A-0", NonToplevelComputerSystem::ControllerName("A", "00"));
    for (const char* bad : {"", "0x1", "1g", "-1", "123456789"})
        EXPECT_THROW(NonToplevelComputerSystem::ControllerName("A", bad), InvalidParamException) << bad;
}

TEST_F(ArraySystem, ControllersComeAndGoWithTheirRedundancySet) {
    ArrayRawData* array = keep(MakeArray(WWN, "ready", 2));
    DacRawData* dac0 = keep(MakeDac(WWN, "00", "ready"));
    DacRawData* dac1 = keep(MakeDac(WWN, "1f", "ready"));
    Store(array);
    Store(dac0);
    Store(dac1);
    ComputerSystem arrayModel;
    DataEventArgs createArray(context, array, nullptr, WWN);
    CIMObjectPath arrayPath = arrayModel.Create(&createArray);

    NonToplevelComputerSystem model;
    DataEventArgs create0(context, dac0, nullptr, WWN), create1(context, dac1, nullptr, WWN);
    model.Create(&create0);
    model.Create(&create1);

    EXPECT_EQ(3u, repository->count("ORV_Storage_ComputerSystem"));
    CIMInstance controller = system(WWN + "-31");
    EXPECT_EQ((Names{"CreationClassName", "Name", "ElementName", "NameFormat", "OperationalStatus"}),
              propertyNames(controller));
    EXPECT_EQ(String("Other"), prop<String>(controller, "NameFormat"));
    EXPECT_EQ(2u, repository->count("ORV_Storage_ComponentCS"));
    EXPECT_EQ(2u, repository->count("ORV_Storage_MemberOfCollection"));
    EXPECT_EQ(1u, repository->count("ORV_Storage_ConcreteIdentity"));
    ASSERT_EQ(1u, repository->count("ORV_Storage_RedundancySet"));
    CIMInstance set = repository->of("ORV_Storage_RedundancySet")[0];
    EXPECT_EQ((Names{"InstanceID", "ElementName", "RedundancyStatus", "TypeOfSet"}), propertyNames(set));
    EXPECT_EQ(String(("ORV.Vx2000 : Redundancy Set.in." + WWN).c_str()), prop<String>(set, "InstanceID"));
    EXPECT_EQ(Uint16(2), prop<Uint16>(set, "RedundancyStatus"));
    EXPECT_EQ((Status{4}), uint16s(set, "TypeOfSet"));
    for (const CIMInstance& part : repository->of("ORV_Storage_ComponentCS"))
        EXPECT_EQ(modeltest::canonical(arrayPath),
                  modeltest::canonical(prop<CIMObjectPath>(part, "GroupComponent")));

    // A controller fails: its state and the array's redundancy follow.
    indications.delivered.clear();
    array->redundancyStatus = 3;
    DacRawData* failed = keep(MakeDac(WWN, "1f", "fault"));
    DataEventArgs modify(context, failed, dac1, WWN);
    model.Modify(&modify);
    EXPECT_EQ((Status{6}), uint16s(system(WWN + "-31"), "OperationalStatus"));
    EXPECT_EQ(Uint16(3), prop<Uint16>(repository->of("ORV_Storage_RedundancySet")[0], "RedundancyStatus"));
    auto changes = indications.named("CIM_InstModification");
    ASSERT_EQ(2u, changes.size());
    // The set names the stored instance as the source and the new one as the previous.
    EXPECT_EQ(Uint16(2), prop<Uint16>(prop<CIMInstance>(changes[1], "SourceInstance"), "RedundancyStatus"));

    // The first controller goes: the set stays for the other one.
    DataEventArgs delete0(context, dac0, nullptr, WWN);
    model.Delete(&delete0);
    EXPECT_EQ(2u, repository->count("ORV_Storage_ComputerSystem"));
    EXPECT_EQ(1u, repository->count("ORV_Storage_RedundancySet"));
    EXPECT_EQ(1u, repository->count("ORV_Storage_ComponentCS"));
    EXPECT_EQ(1u, repository->count("ORV_Storage_MemberOfCollection"));
    EXPECT_EQ(1u, indications.named("CIM_InstDeletion").size());

    // The last one goes: the set and its identity with it.
    DataEventArgs delete1(context, failed, nullptr, WWN);
    model.Delete(&delete1);
    EXPECT_EQ(1u, repository->count("ORV_Storage_ComputerSystem"));
    EXPECT_EQ(0u, repository->count("ORV_Storage_RedundancySet"));
    EXPECT_EQ(0u, repository->count("ORV_Storage_ComponentCS"));
    EXPECT_EQ(0u, repository->count("ORV_Storage_MemberOfCollection"));
}

TEST_F(ArraySystem, FindGivesTheControllerOfANumberOrElseTheArray) {
    ArrayRawData* array = keep(MakeArray(WWN, "ready"));
    DacRawData* dac0 = keep(MakeDac(WWN, "00", "ready"));
    Store(array);
    Store(dac0);
    ComputerSystem arrayModel;
    DataEventArgs createArray(context, array, nullptr, WWN);
    CIMObjectPath arrayPath = arrayModel.Create(&createArray);

    NonToplevelComputerSystem model;
    CIMObjectPath out;
    EXPECT_TRUE(model.Find("00-02", WWN, out));
    EXPECT_EQ(modeltest::canonical(model.WrapReference(dac0)), modeltest::canonical(out));
    EXPECT_TRUE(out.getNameSpace().isNull());
    EXPECT_TRUE(model.Find("00", WWN, out));
    EXPECT_EQ(modeltest::canonical(model.WrapReference(dac0)), modeltest::canonical(out));
    EXPECT_TRUE(model.Find("05-01", WWN, out));
    EXPECT_EQ(modeltest::canonical(arrayPath), modeltest::canonical(out));
    EXPECT_TRUE(model.Find("", WWN, out));
    EXPECT_EQ(modeltest::canonical(arrayPath), modeltest::canonical(out));
}

TEST_F(ArraySystem, FailuresComeBackAsCIMExceptionsAndLeaveTheParent) {
    ArrayRawData* array = keep(MakeArray(WWN, "ready"));
    DacRawData* dac0 = keep(MakeDac(WWN, "00", "ready"));
    ComputerSystem arrayModel;
    DataEventArgs createArray(context, array, nullptr, WWN);
    arrayModel.Create(&createArray);

    // No array record in the store: the set cannot be made.
    RedundancySet set;
    DataEventArgs args(context, dac0, nullptr, WWN);
    try {
        set.WrapInstance(&args);
        ADD_FAILURE() << "no exception";
    } catch (const CIMException& e) {
        EXPECT_EQ(CIM_ERR_INVALID_PARAMETER, e.getCode());
        EXPECT_EQ(String("can not get ArrayRowData!"), e.getMessage());
    }

    Store(array);
    Store(dac0);
    repository->failCreateOfClass = "ORV_Storage_ComponentCS";
    NonToplevelComputerSystem model;
    try {
        model.Create(&args);
        ADD_FAILURE() << "no exception";
    } catch (const CIMException& e) {
        EXPECT_EQ(CIM_ERR_FAILED, e.getCode());
    }
    EXPECT_EQ(2u, repository->count("ORV_Storage_ComputerSystem"));
    EXPECT_EQ(0u, repository->count("ORV_Storage_RedundancySet"));

    // An association that is not there cannot be deleted.
    EXPECT_THROW(MemberOfCollection::Delete(context, arrayModel.GetPath(""), model.WrapReference(dac0)),
                 CIMException);
}

}  // namespace
