// What goes out as an indication, and when.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <Pegasus/Common/CIMProperty.h>

#include "HealthDispose.h"
#include "IndicationNeeder.h"
#include "IndicationSender.h"
#include "ModelTestSupport.h"

using namespace Pegasus;
using namespace orvsmis;
using modeltest::prop;
using modeltest::propertyNames;

namespace {

typedef std::vector<std::string> Names;

CIMInstance volume(std::vector<Uint16> status, int health = -1) {
    CIMInstance instance(CIMName("ORV_Storage_StorageVolume"));
    Array<Uint16> values;
    for (Uint16 v : status) values.append(v);
    if (!status.empty()) instance.addProperty(CIMProperty(CIMName("OperationalStatus"), CIMValue(values)));
    if (health >= 0) instance.addProperty(CIMProperty(CIMName("HealthState"), CIMValue(Uint16(health))));
    Array<CIMKeyBinding> keys;
    keys.append(CIMKeyBinding(CIMName("DeviceID"), "0001", CIMKeyBinding::STRING));
    instance.setPath(CIMObjectPath(String(), CIMNamespaceName("root/orv"), instance.getClassName(), keys));
    return instance;
}

CIMInstance with(CIMInstance instance, const char* name, const CIMValue& value) {
    instance.addProperty(CIMProperty(CIMName(name), value));
    return instance;
}

class Indications : public modeltest::ModelFixture {};

TEST_F(Indications, ModificationIsSentOnlyForTheWatchedProperties) {
    struct Case {
        const char* what;
        CIMInstance newer, older;
        bool sent;
    };
    const Case cases[] = {
        {"same single status, same health", volume({2}, 5), volume({2}, 5), false},
        {"single status changed", volume({6}, 5), volume({2}, 5), true},
        {"status gained an element", volume({2, 5}, 5), volume({2}, 5), true},
        // every element against every element: distinct pairs always differ
        {"same two-element status", volume({2, 5}, 10), volume({2, 5}, 10), true},
        {"health changed", volume({2}, 20), volume({2}, 5), true},
        {"status missing on one side", volume({}, 5), volume({2}, 5), false},
        {"health missing on one side", volume({2}), volume({2}, 5), false},
        {"device number changed", with(volume({2}, 5), "DeviceNumber", CIMValue(String("0001"))),
         with(volume({2}, 5), "DeviceNumber", CIMValue(String("0002"))), true},
        {"sync state on one side only", with(volume({2}, 5), "SyncState", CIMValue(Uint16(6))), volume({2}, 5),
         false},
        {"sync state changed", with(volume({2}, 5), "SyncState", CIMValue(Uint16(6))),
         with(volume({2}, 5), "SyncState", CIMValue(Uint16(7))), true},
        {"redundancy status changed", with(volume({2}, 5), "RedundancyStatus", CIMValue(Uint16(3))),
         with(volume({2}, 5), "RedundancyStatus", CIMValue(Uint16(2))), true},
        {"unwatched property changed", with(volume({2}, 5), "ElementName", CIMValue(String("a"))),
         with(volume({2}, 5), "ElementName", CIMValue(String("b"))), false},
    };
    for (const Case& c : cases) {
        indications.delivered.clear();
        IndicationNeeder needer;
        EXPECT_EQ(c.sent, needer.ActivateInstModificationIndication(c.newer, c.older)) << c.what;
        EXPECT_EQ(c.sent ? 1u : 0u, indications.delivered.size()) << c.what;
    }

    indications.delivered.clear();
    IndicationNeeder needer;
    CIMInstance newer = volume({6}, 20), older = volume({2}, 5);
    ASSERT_TRUE(needer.ActivateInstModificationIndication(newer, older));
    const CIMInstance& sent = indications.delivered.at(0);
    EXPECT_EQ(String("CIM_InstModification"), sent.getClassName().getString());
    EXPECT_EQ((Names{"IndicationTime", "SourceInstance", "PreviousInstance", "SourceInstanceModelPath"}),
              propertyNames(sent));
    EXPECT_EQ(Uint16(20), prop<Uint16>(prop<CIMInstance>(sent, "SourceInstance"), "HealthState"));
    EXPECT_EQ(Uint16(5), prop<Uint16>(prop<CIMInstance>(sent, "PreviousInstance"), "HealthState"));
    EXPECT_EQ(newer.getPath().toString(), prop<String>(sent, "SourceInstanceModelPath"));
    EXPECT_EQ(String("root/orv"), sent.getPath().getNameSpace().getString());
}

TEST_F(Indications, NothingGoesOutWithoutSubscriptionOrHandler) {
    IndicationNeeder needer;
    Singleton<IndicationHandle>::Instance()->SetEnabled(false);
    EXPECT_FALSE(needer.ActivateInstCreationIndication(volume({2}, 5)));
    Singleton<IndicationHandle>::Instance()->SetEnabled(true);
    Singleton<IndicationHandle>::Instance()->SetHandler(nullptr);
    EXPECT_FALSE(needer.ActivateInstDeletionIndication(volume({2}, 5)));
    EXPECT_FALSE(needer.ActivateInstModificationIndication(volume({6}, 5), volume({2}, 5)));
    EXPECT_FALSE(needer.ActivateInstCapacityAlertIndication(volume({2}).getPath(), true));
    EXPECT_TRUE(indications.delivered.empty());

    Singleton<IndicationHandle>::Instance()->SetHandler(&indications);
    IndicationSender sender;
    EXPECT_TRUE(sender.CheckPrepareSend());
    EXPECT_TRUE(needer.ActivateInstCreationIndication(volume({2}, 5)));
    ASSERT_EQ(1u, indications.delivered.size());
    EXPECT_EQ((Names{"IndicationTime", "SourceInstance", "SourceInstanceModelPath"}),
              propertyNames(indications.delivered[0]));
}

TEST_F(Indications, DeviceAlertNamesCurrentHealthFirstAndRatesThePreviousOne) {
    CIMInstance older = with(with(volume({2}, 5), "ElementName", CIMValue(String("vol1"))), "SystemName",
                             CIMValue(String("WWN1")));
    CIMInstance newer = with(with(volume({2}, 20), "ElementName", CIMValue(String("vol1"))), "SystemName",
                             CIMValue(String("WWN1")));
    HealthDispose dispose;
    EXPECT_FALSE(dispose.HealthStateChangeOperating(older.getPath(), older, older));
    ASSERT_TRUE(dispose.HealthStateChangeOperating(newer.getPath(), older, newer));
    ASSERT_EQ(1u, indications.delivered.size());
    const CIMInstance& alert = indications.delivered[0];
    EXPECT_EQ(String("CIM_AlertIndication"), alert.getClassName().getString());
    EXPECT_EQ((Names{"IndicationTime", "PerceivedSeverity", "AlertType", "AlertingElementFormat", "ProbableCause",
                     "SystemCreationClassName", "ProviderName", "SystemName", "AlertingManagedElement",
                     "Description"}),
              propertyNames(alert));
    EXPECT_EQ(String("The HealthState of vol1 in WWN1 has changed from 20 to 5"), prop<String>(alert, "Description"));
    EXPECT_EQ(Uint16(2), prop<Uint16>(alert, "PerceivedSeverity"));
    EXPECT_EQ(Uint16(5), prop<Uint16>(alert, "AlertType"));
    EXPECT_EQ(String("WWN1"), prop<String>(alert, "SystemName"));
    EXPECT_EQ(String("ORV_Storage_ComputerSystem"), prop<String>(alert, "SystemCreationClassName"));
    EXPECT_EQ(String("ORVSMISProviderModule"), prop<String>(alert, "ProviderName"));
    EXPECT_EQ(newer.getPath().toString(), prop<String>(alert, "AlertingManagedElement"));

    EXPECT_EQ(3, IndicationSender::SeverityOfHealth(10));
    EXPECT_EQ(3, IndicationSender::SeverityOfHealth(0));
    EXPECT_EQ(5, IndicationSender::SeverityOfHealth(20));
}

TEST_F(Indications, DeviceAlertNeedsANameAndASystem) {
    IndicationNeeder needer;
    CIMInstance older = volume({2}, 5);
    CIMInstance byDevice = with(with(volume({2}, 10), "DeviceID", CIMValue(String("0001"))), "SystemName",
                                CIMValue(String("WWN1")));
    EXPECT_TRUE(needer.ActivateInstDeviceAlertIndication(byDevice.getPath(), byDevice, older));
    EXPECT_EQ(String("The HealthState of 0001 in WWN1 has changed from 10 to 5"),
              prop<String>(indications.delivered.at(0), "Description"));

    CIMInstance nameless = with(volume({2}, 10), "SystemName", CIMValue(String("WWN1")));
    CIMInstance systemless = with(volume({2}, 10), "ElementName", CIMValue(String("vol1")));
    for (const CIMInstance& bad : {nameless, systemless}) {
        try {
            needer.ActivateInstDeviceAlertIndication(bad.getPath(), bad, older);
            ADD_FAILURE() << "no exception";
        } catch (const CIMException& e) {
            EXPECT_EQ(CIM_ERR_INVALID_PARAMETER, e.getCode());
        }
    }
    EXPECT_EQ(1u, indications.delivered.size());
}

TEST_F(Indications, OperationalStatusChangeIsComparedPlaceByPlace) {
    HealthDispose dispose;
    EXPECT_FALSE(dispose.OperationalStatusChangeOperating(volume({2}, 5), volume({2}, 5)));
    EXPECT_TRUE(dispose.OperationalStatusChangeOperating(volume({2, 6}, 5), volume({2, 5}, 5)));
    EXPECT_TRUE(dispose.OperationalStatusChangeOperating(volume({2}, 5), volume({2, 5}, 5)));
    EXPECT_EQ(2u, indications.named("CIM_InstModification").size());
}

TEST_F(Indications, CapacityAlertsCarryTheirMessageIds) {
    IndicationNeeder needer;
    CIMObjectPath pool(String(), CIMNamespaceName("root/orv"), CIMName("ORV_Storage_StoragePool"));
    ASSERT_TRUE(needer.ActivateInstCapacityAlertIndication(pool, false));
    ASSERT_TRUE(needer.ActivateInstCapacityAlertIndication(pool, true));
    ASSERT_EQ(2u, indications.delivered.size());
    const CIMInstance& threshold = indications.delivered[0];
    const CIMInstance& over = indications.delivered[1];
    EXPECT_EQ((Names{"IndicationTime", "PerceivedSeverity", "AlertType", "AlertingElementFormat", "ProbableCause",
                     "SystemCreationClassName", "ProviderName", "SystemName", "AlertingManagedElement",
                     "Description", "OwningEntity", "MessageID"}),
              propertyNames(threshold));
    EXPECT_EQ(String("DRM28"), prop<String>(threshold, "MessageID"));
    EXPECT_EQ(Uint16(4), prop<Uint16>(threshold, "PerceivedSeverity"));
    EXPECT_EQ(Uint16(52), prop<Uint16>(threshold, "ProbableCause"));
    EXPECT_EQ(String("Threshold of the capacity is exceeded."), prop<String>(threshold, "Description"));
    EXPECT_EQ(String("DRM29"), prop<String>(over, "MessageID"));
    EXPECT_EQ(Uint16(5), prop<Uint16>(over, "PerceivedSeverity"));
    EXPECT_EQ(Uint16(33), prop<Uint16>(over, "ProbableCause"));
    EXPECT_EQ(String("Capacity is over."), prop<String>(over, "Description"));
    EXPECT_EQ(String("SNIA"), prop<String>(over, "OwningEntity"));
}

TEST_F(Indications, CriticalAndCommandAlerts) {
    IndicationSender sender;
    ASSERT_TRUE(sender.SendCriticalAlertIndication("Memory is over the limit."));
    CIMObjectPath job(String(), CIMNamespaceName("root/orv"), CIMName("ORV_Storage_ConcreteJob"));
    ASSERT_TRUE(sender.SendCLIAlertIndication("CreateOrModifyStoragePool", job));
    ASSERT_EQ(2u, indications.delivered.size());
    const CIMInstance& critical = indications.delivered[0];
    EXPECT_EQ((Names{"IndicationTime", "AlertType", "AlertingElementFormat", "SystemCreationClassName",
                     "ProviderName", "PerceivedSeverity", "Description", "SystemName"}),
              propertyNames(critical));
    EXPECT_EQ(Uint16(6), prop<Uint16>(critical, "PerceivedSeverity"));
    EXPECT_EQ(String("Memory is over the limit."), prop<String>(critical, "Description"));
    EXPECT_EQ(String("The call to method CreateOrModifyStoragePool has failed."),
              prop<String>(indications.delivered[1], "Description"));
    EXPECT_EQ(Uint16(4), prop<Uint16>(indications.delivered[1], "AlertType"));
}

}  // namespace
