#pragma once
// What a person at the array's console can do, as "arraysim" subcommands:
//   init --template small|medium|large|max [--protocol P] [--controllers N] [--seed N]
//   show
//   set disk GG-NNNN --state S | set pool NNNN [--state S] [--used N%|BYTES]
//   set ld NNNN [--state S] [--capacity BYTES]
//   set controller N --state S | set port DD-PP --state S | set enclosure KIND DE-N --state S
//   set unit [--name N] [--contact C] [--location L] | set access-control on|off
//   set pair MV --state S
//   set firmware [--array REVISION] [--base VERSION] [--disk GG-NNNN REVISION]...
//   fault TARGET --mode M [--count N] [--rc N] [--message M] [--seconds S] [--text T] | fault clear | fault list
//   time instant|realistic [--rate MB/s]
// Numbers the array shows in hexadecimal are taken with or without the "h".

#include <string>

#include "ArrayState.h"

namespace CLI {
class App;
}

namespace arraysim {

class ConsoleCommands {
public:
    // Adds init, show, set, fault and time to app, working on the state folder
    // StateStore::DefaultDir().
    static void AddSubcommands(CLI::App& app);

    // The changes behind "set", on a state in memory; each throws
    // std::invalid_argument with the reason when the object or value is wrong.
    static void SetDiskState(ArrayState& state, const std::string& pdn, const std::string& value);
    static void SetPoolState(ArrayState& state, const std::string& pool, const std::string& value);
    static void SetPoolUsed(ArrayState& state, const std::string& pool, const std::string& used);
    static void SetLdState(ArrayState& state, const std::string& ldn, const std::string& value);
    // Grows an LD to the given size in bytes (decimal, a whole number of
    // 512-byte blocks), taking the difference from its pool.
    static void SetLdCapacity(ArrayState& state, const std::string& ldn, const std::string& bytes);
    // A firmware update: the array's product firmware revision, the version
    // of every base product it ships, or one disk's product revision.
    static void SetArrayFirmware(ArrayState& state, const std::string& revision);
    static void SetBaseProductVersion(ArrayState& state, const std::string& version);
    static void SetDiskFirmware(ArrayState& state, const std::string& pdn, const std::string& revision);
    static void SetControllerState(ArrayState& state, const std::string& number, const std::string& value);
    static void SetPortState(ArrayState& state, const std::string& port, const std::string& value);
    static void SetEnclosureState(ArrayState& state, const std::string& kind, const std::string& where,
                                  const std::string& value);
    static void SetUnitName(ArrayState& state, const std::string& value);
    static void SetUnitContact(ArrayState& state, const std::string& value);
    static void SetUnitLocation(ArrayState& state, const std::string& value);
    static void SetAccessControl(ArrayState& state, const std::string& onOff);
    static void SetPairState(ArrayState& state, const std::string& mv, const std::string& value);
    static void SetTiming(ArrayState& state, const std::string& mode, double rateMBps);

    // A hexadecimal number as the array writes it ("0005h", "0005", "5h"); throws
    // std::invalid_argument.
    static unsigned ParseHex(const std::string& text, const std::string& what);

    // A readable summary of the array.
    static std::string Show(const ArrayState& state);
};

}  // namespace arraysim
