#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/String.h>

#include <gtest/gtest.h>

#include <sstream>

PEGASUS_USING_PEGASUS;

TEST(StringTest, Utf8RoundTripCountsUtf16Units) {
    const char* text = "Gr\xC3\xBC\xC3\x9F" "e \xE2\x82\xAC \xF0\x9F\x92\xBE";  // umlaut, euro, one astral char
    String s(text);
    EXPECT_EQ(s.size(), 10u);  // G r ü ß e ' ' € ' ' + surrogate pair
    EXPECT_STREQ((const char*)s.getCString(), text);
    std::ostringstream os;
    os << s;
    EXPECT_EQ(os.str(), text);
}

TEST(StringTest, InvalidUtf8IsKeptByteForByte) {
    String s("a\xFF\xC3");  // a stray byte and a truncated sequence
    ASSERT_EQ(s.size(), 3u);
    EXPECT_EQ(Uint16(s[1]), 0xFF);
    EXPECT_EQ(Uint16(s[2]), 0xC3);
}

TEST(StringTest, EditingSearchingAndBounds) {
    String s("Hello, World");
    EXPECT_EQ(s.find('W'), 7u);
    EXPECT_EQ(s.find(String("World")), 7u);
    EXPECT_EQ(s.find('z'), PEG_NOT_FOUND);
    EXPECT_EQ(s.reverseFind('o'), 8u);
    EXPECT_EQ(s.subString(7), String("World"));
    EXPECT_EQ(s.subString(7, 100), String("World"));
    EXPECT_EQ(s.subString(100), String());
    s.remove(5);
    EXPECT_EQ(s, "Hello");
    EXPECT_THROW(s[5], IndexOutOfBoundsException);
    EXPECT_THROW(s.remove(6), IndexOutOfBoundsException);
    s.appendPrintf(" %d-%s", 42, "x");
    EXPECT_EQ(s, "Hello 42-x");
    s.toLower();
    EXPECT_EQ(s, "hello 42-x");
    EXPECT_TRUE(s[0] == 'h');
    EXPECT_THROW(String((const char*)nullptr), NullPointer);
}

TEST(StringTest, ComparisonsWithAndWithoutCase) {
    EXPECT_TRUE(String::equalNoCase("ORV_Volume", "orv_volume"));
    EXPECT_FALSE(String::equal("ORV_Volume", "orv_volume"));
    EXPECT_LT(String::compare("abc", "abd"), 0);
    EXPECT_EQ(String::compare("abcX", "abcY", 3), 0);
    EXPECT_EQ(String::compareNoCase("ABC", "abc"), 0);
    EXPECT_GT(String::compareNoCase("abcd", "ABC"), 0);
    EXPECT_TRUE(String("a") < String("b"));
    EXPECT_EQ(String("a") + String("b"), "ab");
}

TEST(CIMNameTest, LegalNamesAndCaseInsensitiveEquality) {
    EXPECT_TRUE(CIMName::legal("ORV_StoragePool"));
    EXPECT_TRUE(CIMName::legal("_x1"));
    for (const char* bad : {"", "1abc", "a b", "a.b", "a:b", "a\"b"}) {
        EXPECT_FALSE(CIMName::legal(bad)) << bad;
        EXPECT_THROW(CIMName{String(bad)}, InvalidNameException) << bad;
    }
    EXPECT_TRUE(CIMName().isNull());
    EXPECT_EQ(CIMName("DeviceID"), CIMName("deviceid"));
    EXPECT_NE(CIMName("DeviceID"), CIMName("DeviceIDs"));
}

TEST(CIMNamespaceNameTest, SlashesAndCase) {
    EXPECT_EQ(CIMNamespaceName("/root/orv").getString(), "root/orv");
    EXPECT_EQ(CIMNamespaceName("root/ORV"), CIMNamespaceName("ROOT/orv"));
    for (const char* bad : {"", "/", "root//orv", "root/", "root/o rv", "root/1x"}) {
        EXPECT_THROW(CIMNamespaceName{String(bad)}, InvalidNamespaceNameException) << bad;
    }
}
