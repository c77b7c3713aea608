// The filter query language: what is refused (and where), and which
// indications pass which conditions.

#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Indication/WqlFilter.h>

#include <gtest/gtest.h>

#include <map>
#include <string>

using namespace Pegasus;

namespace {

struct BadQuery {
    const char* query;
    std::size_t position;
    const char* expected;   // part of the expectation text
};

TEST(WqlFilterTest, RefusesMalformedQueriesWithPositionAndExpectation) {
    const BadQuery cases[] = {
        {"", 0, "SELECT"},
        {"DELETE FROM X", 0, "SELECT"},
        {"SELECT", 6, "'*' or a property name"},
        {"SELECT * FROM", 13, "indication class name"},
        {"SELECT * FROM X extra", 16, "WHERE or end of query"},
        {"SELECT * FROM X WHERE", 21, "property name or a literal"},
        {"SELECT * FROM X WHERE A = ", 26, "property name or a literal"},
        {"SELECT * FROM X WHERE (A = 1", 28, "')'"},
        {"SELECT * FROM X WHERE A == 1", 25, "property name or a literal"},
        {"SELECT * FROM X WHERE A = 'abc", 26, "closing '"},
        {"SELECT * FROM X WHERE A = 1 B", 28, "AND, OR or end of query"},
        {"SELECT * FROM X WHERE A # 1", 24, "a name, a literal"},
        {"SELECT * FROM X WHERE A ! 1", 24, "comparison operator"},
        {"SELECT * FROM X WHERE 1 ISA Y", 24, "a property before ISA"},
        {"SELECT * FROM X WHERE A IS 5", 27, "NULL"},
        {"SELECT * FROM X WHERE A = 1e", 28, "exponent"},
        {"SELECT * FROM X WHERE A = 12abc", 28, "after a number"},
        {"SELECT * FROM X WHERE A", 23, "comparison operator, IS or ISA"},
        {"SELECT * FROM WHERE", 14, "indication class name"},
        {"SELECT A, FROM X", 10, "'*' or a property name"},
        {"SELECT * FROM X WHERE A.", 24, "property name after '.'"},
    };
    for (const BadQuery& c : cases) {
        SCOPED_TRACE(c.query);
        try {
            WqlFilter::parse(c.query);
            ADD_FAILURE() << "parsed";
        } catch (const WqlParseError& e) {
            EXPECT_EQ(e.position(), c.position) << e.what();
            EXPECT_NE(e.expected().find(c.expected), std::string::npos) << e.what();
            EXPECT_NE(std::string(e.what()).find("position " + std::to_string(c.position)), std::string::npos);
        }
    }
}

TEST(WqlFilterTest, HostileNestingIsRefusedNotACrash) {
    EXPECT_THROW(WqlFilter::parse("SELECT * FROM X WHERE " + std::string(100000, '(') + "A = 1"), WqlParseError);
    std::string nots = "SELECT * FROM X WHERE ";
    for (int i = 0; i < 5000; ++i) nots += "NOT ";
    EXPECT_THROW(WqlFilter::parse(nots + "A = 1"), WqlParseError);
    // Within the limit it parses.
    EXPECT_NO_THROW(WqlFilter::parse("SELECT * FROM X WHERE " + std::string(30, '(') + "A = 1" + std::string(30, ')')));
}

TEST(WqlFilterTest, ParsesParts) {
    const WqlFilter all = WqlFilter::parse("select * from CIM_AlertIndication");
    EXPECT_EQ(all.fromClass(), "CIM_AlertIndication");
    EXPECT_TRUE(all.selectsAll());
    EXPECT_FALSE(all.hasCondition());
    EXPECT_EQ(all.conditionText(), "");

    const WqlFilter some = WqlFilter::parse(
        "SELECT MessageID, PerceivedSeverity FROM CIM_AlertIndication WHERE SourceInstance.Name = 'x' "
        "AND messageid <> 'y'  ");
    EXPECT_EQ(some.selectList(), (std::vector<std::string>{"MessageID", "PerceivedSeverity"}));
    EXPECT_EQ(some.conditionText(), "SourceInstance.Name = 'x' AND messageid <> 'y'");
    // Own properties only, each once whatever its case.
    EXPECT_EQ(some.referencedProperties(),
        (std::vector<std::string>{"MessageID", "PerceivedSeverity", "SourceInstance"}));

    EXPECT_TRUE(WqlFilter::isSupportedLanguage("WQL"));
    EXPECT_TRUE(WqlFilter::isSupportedLanguage("DMTF:CQL"));
    EXPECT_TRUE(WqlFilter::isSupportedLanguage("cim:cql"));
    EXPECT_FALSE(WqlFilter::isSupportedLanguage("SQL"));
}

CIMInstance volume() {
    CIMInstance v("ORV_StorageVolume");
    v.addProperty(CIMProperty("ElementName", String("vol1")));
    v.addProperty(CIMProperty("HealthState", CIMValue(Uint16(5))));
    v.addProperty(CIMProperty("Enabled", CIMValue(Boolean(true))));
    v.addProperty(CIMProperty("Size", CIMValue(Uint64(18446744073709551615ull))));
    return v;
}

CIMInstance capacityAlert() {
    CIMInstance a("CIM_AlertIndication");
    a.addProperty(CIMProperty("PerceivedSeverity", CIMValue(Uint16(5))));
    a.addProperty(CIMProperty("AlertType", CIMValue(Uint16(5))));
    a.addProperty(CIMProperty("ProbableCause", CIMValue(Uint16(33))));
    a.addProperty(CIMProperty("Description", String("Capacity is over.")));
    a.addProperty(CIMProperty("MessageID", String("DRM29")));
    a.addProperty(CIMProperty("OtherSeverity", CIMValue(CIMTYPE_STRING, false)));   // NULL
    a.addProperty(CIMProperty("Trend", CIMValue(Real64(-1.5))));
    return a;
}

CIMInstance creation() {
    CIMInstance c("CIM_InstCreation");
    c.addProperty(CIMProperty("SourceInstance", CIMValue(volume())));
    c.addProperty(CIMProperty("SourceInstanceModelPath", String("ORV_StorageVolume.DeviceID=\"1\"")));
    return c;
}

bool isa(const std::string& cls, const std::string& base) {
    static const std::map<std::string, std::string> parent = {
        {"ORV_StorageVolume", "CIM_StorageVolume"}, {"CIM_StorageVolume", "CIM_ManagedElement"}};
    for (std::string c = cls;;) {
        if (c == base) return true;
        auto it = parent.find(c);
        if (it == parent.end()) return false;
        c = it->second;
    }
}

struct Match {
    const char* condition;
    bool alert;   // against the alert, else the creation
    bool passes;
};

TEST(WqlFilterTest, EvaluatesConditions) {
    const Match cases[] = {
        {"PerceivedSeverity = 5", true, true},
        {"PerceivedSeverity <> 5", true, false},
        {"PerceivedSeverity != 4", true, true},
        {"5 = PerceivedSeverity", true, true},
        {"PerceivedSeverity > 4 AND AlertType = 5", true, true},
        {"PerceivedSeverity > 5 AND AlertType = 5", true, false},
        {"PerceivedSeverity < 5 OR MessageID = 'DRM29'", true, true},
        {"PerceivedSeverity < 5 OR MessageID = 'DRM28'", true, false},
        {"NOT (MessageID = 'DRM28')", true, true},
        {"NOT MessageID = 'DRM29'", true, false},
        {"Description = \"Capacity is over.\"", true, true},
        {"MessageID = 'drm29'", true, false},            // string values compare exactly
        {"messageid = 'DRM29'", true, true},             // names do not
        {"ProbableCause >= 33.0 AND ProbableCause <= 33", true, true},
        {"Trend < -1 AND Trend > -2e0", true, true},
        {"MessageID > 'DRM28' AND MessageID < 'DRM3'", true, true},
        {"OtherSeverity IS NULL", true, true},
        {"NoSuchProperty IS NULL", true, true},
        {"MessageID IS NOT NULL", true, true},
        {"OtherSeverity IS NOT NULL", true, false},
        // Unknown (NULL, type mismatch) is never true, also under NOT.
        {"OtherSeverity = 'x'", true, false},
        {"NOT OtherSeverity = 'x'", true, false},
        {"OtherSeverity = NULL", true, false},
        {"PerceivedSeverity = '5'", true, false},
        {"NOT PerceivedSeverity = '5'", true, false},
        {"OtherSeverity = 'x' OR PerceivedSeverity = 5", true, true},
        {"OtherSeverity = 'x' AND PerceivedSeverity = 4", true, false},
        {"(PerceivedSeverity = 4 OR AlertType = 5) AND NOT (ProbableCause = 52)", true, true},
        {"PerceivedSeverity = 4 OR AlertType = 5 AND ProbableCause = 52", true, false},   // AND binds first
        {"SourceInstance ISA CIM_StorageVolume", false, true},
        {"SourceInstance ISA ORV_StorageVolume", false, true},
        {"SourceInstance ISA 'CIM_ManagedElement'", false, true},
        {"SourceInstance ISA CIM_StoragePool", false, false},
        {"NOT SourceInstance ISA CIM_StoragePool", false, true},
        {"SourceInstanceModelPath ISA CIM_StorageVolume", false, false},   // not an instance
        {"SourceInstance.ElementName = 'vol1'", false, true},
        {"SourceInstance.elementname <> 'vol1'", false, false},
        {"SourceInstance.HealthState = 5 AND SourceInstance.Enabled = TRUE", false, true},
        {"SourceInstance.Enabled = FALSE", false, false},
        {"SourceInstance.Size = 18446744073709551615", false, true},
        {"SourceInstance.Size > 18446744073709551614", false, true},
        {"SourceInstance.Missing IS NULL", false, true},
        {"SourceInstance.ElementName.Deeper = 'x'", false, false},
    };
    for (const Match& c : cases) {
        SCOPED_TRACE(c.condition);
        const WqlFilter filter = WqlFilter::parse(std::string("SELECT * FROM CIM_Indication WHERE ") + c.condition);
        EXPECT_EQ(filter.evaluate(c.alert ? capacityAlert() : creation(), isa), c.passes);
    }
}

TEST(WqlFilterTest, WithoutConditionEverythingPassesAndProjectionKeepsSelected) {
    EXPECT_TRUE(WqlFilter::parse("SELECT * FROM CIM_Indication").evaluate(capacityAlert()));
    // Without a class hierarchy ISA compares names.
    EXPECT_TRUE(WqlFilter::parse("SELECT * FROM X WHERE SourceInstance ISA orv_storagevolume").evaluate(creation()));
    EXPECT_FALSE(WqlFilter::parse("SELECT * FROM X WHERE SourceInstance ISA CIM_StorageVolume").evaluate(creation()));

    const CIMInstance alert = capacityAlert();
    const CIMInstance projected =
        WqlFilter::parse("SELECT messageid, PerceivedSeverity FROM CIM_AlertIndication").project(alert);
    EXPECT_EQ(projected.getPropertyCount(), 2u);
    EXPECT_NE(projected.findProperty("MessageID"), PEG_NOT_FOUND);
    EXPECT_NE(projected.findProperty("PerceivedSeverity"), PEG_NOT_FOUND);
    EXPECT_EQ(alert.getPropertyCount(), 7u);   // the original is untouched
    EXPECT_EQ(WqlFilter::parse("SELECT * FROM CIM_AlertIndication").project(alert).getPropertyCount(), 7u);
}

} // namespace
