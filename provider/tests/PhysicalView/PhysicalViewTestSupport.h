#ifndef PROVIDER_TESTS_PHYSICALVIEW_PHYSICALVIEWTESTSUPPORT_H
#define PROVIDER_TESTS_PHYSICALVIEW_PHYSICALVIEWTESTSUPPORT_H

// The physical view wired to the array and disk models as the provider wires
// it, over the stand-in repository, with records shaped as the array reports
// them.

#include <string>
#include <vector>

#include <Pegasus/Common/CIMObjectPath.h>

#include "Chassis.h"
#include "ComputerSystem.h"
#include "DiskDrive.h"
#include "Location.h"
#include "MC.h"
#include "PDmanager.h"
#include "PdRawData.h"
#include "PhysicalPackage.h"
#include "SoftwareIdentityArray.h"
#include "SoftwareIdentityPD.h"
#include "../Model/ModelTestSupport.h"

namespace physicaltest {

using namespace Pegasus;

const std::string WWN = "2000000991000001";

class PhysicalFixture : public modeltest::ModelFixture {
protected:
    void SetUp() override {
        ModelFixture::SetUp();
        using namespace orvsmis;
        ComputerSystem::AfterCreated += &SoftwareIdentityArray::OnCreate;
        ComputerSystem::BeforeDeleted += &SoftwareIdentityArray::OnDelete;
        ComputerSystem::AfterCreated += &Chassis::OnCreate;
        ComputerSystem::AfterModified += &Chassis::OnModify;
        ComputerSystem::AfterModified += &SoftwareIdentityArray::OnModify;
        ComputerSystem::BeforeDeleted += &Chassis::OnDelete;
        DiskDrive::AfterCreated += &PhysicalPackage::OnCreate;
        DiskDrive::AfterModified += &PhysicalPackage::OnModify;
        DiskDrive::BeforeDeleted += &PhysicalPackage::OnDelete;
        Chassis::AfterCreated += &Location::OnCreate;
        Chassis::BeforeDeleted += &Location::OnDelete;
        Chassis::AfterModified += &Location::OnModify;
    }
    void TearDown() override {
        using namespace orvsmis;
        DiskDrive::AfterCreated.Clear();
        DiskDrive::AfterModified.Clear();
        DiskDrive::BeforeDeleted.Clear();
        Chassis::AfterCreated.Clear();
        Chassis::AfterModified.Clear();
        Chassis::BeforeDeleted.Clear();
        for (orvsmis::RawData* record : held) record->Release();
        PDmanager::Instance()->Destroy();
        ModelFixture::TearDown();
    }

    orvsmis::ArrayRawData* ArrayRecord(const std::string& firmware = "0971", const std::string& location = "Server room 1") {
        orvsmis::ArrayRawData* array = MakeArray(WWN, "ready");
        array->diskArrayName = "Array0A1B";
        array->productFWRevision = firmware;
        array->unitLocation = location;
        array->version = "9.71";
        array->revision = "0001";
        held.push_back(array);
        return array;
    }
    orvsmis::PdRawData* Disk(const std::string& pdn, const std::string& revision = "A3C0") {
        orvsmis::PdRawData* pd = new orvsmis::PdRawData();
        pd->AddRef();
        pd->name = pd->PDN = pdn;
        pd->arrayId = WWN;
        pd->classification = "not set";
        pd->state = "ready";
        pd->PDCapacity = 1000000000ULL;
        pd->type = "SAS";
        pd->rotationalSpeed = "15000";
        pd->vendorID = "ORVDISK";
        pd->productID = "ST600";
        pd->productRevision = revision;
        pd->serialNumber = "SN" + pdn;
        held.push_back(pd);
        return pd;
    }

    // The array and disk models, as a load drives them.
    void CreateArray(orvsmis::ArrayRawData* array) {
        orvsmis::DataEventArgs args(context, array, nullptr, WWN);
        orvsmis::ComputerSystem model;
        model.Create(&args);
    }
    void ModifyArray(orvsmis::ArrayRawData* now, orvsmis::ArrayRawData* before) {
        orvsmis::DataEventArgs args(context, now, before, WWN);
        orvsmis::ComputerSystem model;
        model.Modify(&args);
    }
    void DeleteArray(orvsmis::ArrayRawData* array) {
        orvsmis::DataEventArgs args(context, array, nullptr, WWN);
        orvsmis::ComputerSystem model;
        model.Delete(&args);
    }
    void CreateDisk(orvsmis::PdRawData* pd) {
        orvsmis::DataEventArgs args(context, pd, nullptr, WWN);
        orvsmis::DiskDrive model;
        model.Create(&args);
    }
    void ModifyDisk(orvsmis::PdRawData* now, orvsmis::PdRawData* before) {
        orvsmis::DataEventArgs args(context, now, before, WWN);
        orvsmis::DiskDrive model;
        model.Modify(&args);
    }
    void DeleteDisk(orvsmis::PdRawData* pd) {
        orvsmis::DataEventArgs args(context, pd, nullptr, WWN);
        orvsmis::DiskDrive model;
        model.Delete(&args);
    }

    // The one stored instance of a class; a test failure when there is not
    // exactly one.
    CIMInstance only(const std::string& className) {
        std::vector<CIMInstance> found = repository->of(className);
        EXPECT_EQ(found.size(), 1u) << className;
        return found.empty() ? CIMInstance(CIMName(className.c_str())) : found[0];
    }
    // The array's firmware identity: the disks' identities end with ".in."
    // and the array's name.
    CIMInstance arrayFirmware() {
        std::vector<CIMInstance> found;
        for (const CIMInstance& i : repository->of("ORV_Storage_SoftwareIdentity")) {
            const Uint32 at = i.findProperty(CIMName("InstanceID"));
            if (at == PEG_NOT_FOUND) continue;
            String id;
            i.getProperty(at).getValue().get(id);
            if (id.toUtf8().find(".in.") == std::string::npos) found.push_back(i);
        }
        EXPECT_EQ(found.size(), 1u) << "array firmware identities";
        return found.empty() ? CIMInstance(CIMName("ORV_Storage_SoftwareIdentity")) : found[0];
    }
    // The stored instances of an association class that refer to path.
    std::vector<CIMInstance> linksOf(const std::string& className, const CIMObjectPath& path) {
        std::vector<CIMInstance> out;
        const std::string target = modeltest::canonical(path);
        for (const CIMInstance& link : repository->of(className)) {
            for (Uint32 i = 0; i < link.getPropertyCount(); ++i) {
                CIMValue value = link.getProperty(i).getValue();
                if (value.isNull() || value.getType() != CIMTYPE_REFERENCE) continue;
                CIMObjectPath ref;
                value.get(ref);
                if (modeltest::canonical(ref) == target) {
                    out.push_back(link);
                    break;
                }
            }
        }
        return out;
    }
    // The reference under role of an association instance.
    static CIMObjectPath end(const CIMInstance& link, const char* role) {
        CIMObjectPath ref;
        link.getProperty(link.findProperty(CIMName(role))).getValue().get(ref);
        return ref;
    }
    static std::string text(const CIMInstance& instance, const char* name) {
        return modeltest::prop<String>(instance, name).toUtf8();
    }

    std::vector<orvsmis::RawData*> held;
};

}  // namespace physicaltest

#endif
