// Reading command lines: the module's spacing is accepted, everything else
// is refused with a message naming the fault.

#include <gtest/gtest.h>

#include <functional>

#include "CommandError.h"
#include "CommandLine.h"

using arraysim::CommandError;
using arraysim::CommandLine;
using arraysim::OptionDef;

namespace {

using Words = std::vector<std::string>;

const std::vector<OptionDef> kLdBind = {{"-poolnumber", true}, {"-ldn", true}, {"-capacity", true},
                                         {"-unit", true},       {"-mode", true}, {"-all", false}};

std::string syntaxMessage(const std::function<void()>& action) {
    try {
        action();
    } catch (const CommandError& e) {
        EXPECT_EQ(e.GetKind(), CommandError::Kind::Syntax) << e.what();
        EXPECT_EQ(e.ReturnCode(), 2);
        return e.what();
    }
    ADD_FAILURE() << "no refusal";
    return "";
}

TEST(CommandLineTest, SplitKeepsWordsWhateverTheBlanks) {
    EXPECT_EQ(CommandLine::Split(" Vexcfg  delldsetinitiator -ldset LX:A -initiatorname iqn.x"),
              (Words{"Vexcfg", "delldsetinitiator", "-ldset", "LX:A", "-initiatorname", "iqn.x"}));
    EXPECT_EQ(CommandLine::Split("Vexcfg poolbind -raid 1  -pdg 00h\t-pdn 0ch,0dh "),
              (Words{"Vexcfg", "poolbind", "-raid", "1", "-pdg", "00h", "-pdn", "0ch,0dh"}));
    EXPECT_EQ(CommandLine::Split("Vexcfg nickname -ldn 0010h -newname :Data_1"),
              (Words{"Vexcfg", "nickname", "-ldn", "0010h", "-newname", ":Data_1"}));
    EXPECT_TRUE(CommandLine::Split("   ").empty());
}

TEST(CommandLineTest, SplitRefusesShellAndControlCharacters) {
    for (const std::string line : std::vector<std::string>{"Vexcfg ldunbind -ldn 0010h; rm -rf /", "Vexcfg ldunbind -ldn $(id)",
                                   "Vexcfg nickname -newname :'a b'", "Vexcfg ldunbind -ldn 0010h | cat",
                                   std::string("Vexcfg ldunbind\n-ldn 0010h")})
        EXPECT_FALSE(syntaxMessage([&] { CommandLine::Split(line); }).empty()) << line;
}

TEST(CommandLineTest, ReadsOptionsAndValues) {
    CommandLine line("Vexcfg ldbind", {"-poolnumber", "001Fh", "-ldn", "0100h", "-capacity", "2048", "-unit", "mb", "-all"},
                     kLdBind);
    EXPECT_EQ(line.Hex("-poolnumber", 0xff), 0x1fu);
    EXPECT_EQ(line.Hex("-ldn", 0x1fff), 0x100u);
    EXPECT_EQ(line.Decimal("-capacity", 0, 4096), 2048u);
    EXPECT_EQ(line.Choice("-unit", {"mb"}), "mb");
    EXPECT_TRUE(line.Has("-all"));
    EXPECT_FALSE(line.Has("-mode"));
    EXPECT_EQ(line.OneOf({"-mode", "-all"}), "-all");
}

TEST(CommandLineTest, RefusesMalformedLines) {
    struct Case {
        Words args;
        const char* fragment;
    };
    const Case cases[] = {
        {{"-ldn", "0100h", "-size", "5"}, "unknown option -size"},
        {{"-ldn", "0100h", "-ldn", "0101h"}, "given twice"},
        {{"-ldn"}, "-ldn needs a value"},
        {{"-ldn", "-capacity", "5"}, "-ldn needs a value"},
        {{"-ldn", "0100h", "extra"}, "unexpected word \"extra\" after 0100h"},
        {{"0100h"}, "unexpected word"},
        {{"-ldn", ""}, "-ldn needs a value"},
    };
    for (const Case& c : cases) {
        const std::string message = syntaxMessage([&] { CommandLine("Vexcfg ldbind", c.args, kLdBind); });
        EXPECT_NE(message.find(c.fragment), std::string::npos) << message;
        EXPECT_EQ(message.rfind("Vexcfg ldbind: ", 0), 0u) << message;
    }
}

TEST(CommandLineTest, NumbersMustBeWrittenExactly) {
    auto hex = [](const std::string& text, unsigned max) {
        return CommandLine("c", {"-ldn", text}, kLdBind).Hex("-ldn", max);
    };
    EXPECT_EQ(hex("0h", 0xff), 0u);
    EXPECT_EQ(hex("1fffh", 0x1fff), 0x1fffu);
    for (const std::string bad : std::vector<std::string>{"0100", "h", "0x10h", "10H", "2000h", "-1h", "1 h", "123456789h"})
        EXPECT_NE(syntaxMessage([&] { hex(bad, 0x1fff); }).find("suffix h"), std::string::npos) << bad;

    auto decimal = [](const std::string& text) {
        return CommandLine("c", {"-capacity", text}, kLdBind).Decimal("-capacity", 1, 100);
    };
    EXPECT_EQ(decimal("100"), 100u);
    for (const std::string bad : std::vector<std::string>{"0", "101", "1.5", "1e3", "+5", "99999999999999999999"})
        EXPECT_NE(syntaxMessage([&] { decimal(bad); }).find("decimal number from 1 to 100"), std::string::npos) << bad;

    CommandLine list("c", {"-ldn", "0ch,0dh,000eh"}, kLdBind);
    EXPECT_EQ(list.HexList("-ldn", 0xffff), (std::vector<unsigned>{0xc, 0xd, 0xe}));
    for (const std::string bad : std::vector<std::string>{"0ch,,0dh", "0ch,0c", "0ch,0ch", "0ch,", ",0ch"})
        EXPECT_FALSE(syntaxMessage([&] { CommandLine("c", {"-ldn", bad}, kLdBind).HexList("-ldn", 0xffff); }).empty())
            << bad;
}

TEST(CommandLineTest, RequiredChoicesAndExclusiveOptions) {
    CommandLine line("Vexrc_pair", {"-ldn", "1h", "-all"}, kLdBind);
    EXPECT_NE(syntaxMessage([&] { line.Value("-mode"); }).find("option -mode is required"), std::string::npos);
    EXPECT_NE(syntaxMessage([&] { line.OneOf({"-ldn", "-all"}); }).find("exclude each other"), std::string::npos);
    EXPECT_NE(syntaxMessage([&] { line.OneOf({"-mode", "-unit"}); }).find("one of -mode or -unit"), std::string::npos);
    CommandLine unit("c", {"-unit", "gb"}, kLdBind);
    EXPECT_NE(syntaxMessage([&] { unit.Choice("-unit", {"mb"}); }).find("takes mb, not \"gb\""), std::string::npos);
}

}  // namespace
