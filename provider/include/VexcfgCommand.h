#ifndef ORVSMIS_VEXCFGCOMMAND_H
#define ORVSMIS_VEXCFGCOMMAND_H

#include <string>

#include "ConfigCommand.h"

namespace orvsmis {

class CommandImpl;
class CreatePoolDetailArgs;
class ModifyPoolDetailArgs;
class DeletePoolDetailArgs;
class CreateLdDetailArgs;
class ModifyLdDetailArgs;
class DeleteLdDetailArgs;

// One step of the array's configuration tool: each operation writes one
// exact Vexcfg line, runs it once and tells whether the tool carried it out.
// A false result is explained by GetError on the same object.
//
// Every value written into a line is checked against the form the array
// takes for it (CommandTextCheck) first: a value that does not fit is never
// run, the operation answers false, and GetError gives "00020" with the
// reason. Numbers come as hexadecimal text without prefix; sizes in bytes.
class VexcfgCommand : public ConfigCommand {
public:
    VexcfgCommand();
    // Runs the lines through impl (owned) instead of the configured way.
    explicit VexcfgCommand(CommandImpl* impl);

    std::string GetName() const { return "Vexcfg"; }

    bool PoolBind(const CreatePoolDetailArgs& args);
    bool PoolExpand(const ModifyPoolDetailArgs& args);
    // Only for a "virtual" pool; any other runs nothing and is true.
    bool VirtualPoolCapacityExpand(const ModifyPoolDetailArgs& args);
    bool PoolUnbind(const DeletePoolDetailArgs& args);
    bool LdBind(const CreateLdDetailArgs& args);
    bool LdExpand(const ModifyLdDetailArgs& args);
    bool LdUnbind(const DeleteLdDetailArgs& args);
    bool NickPoolName(const std::string& poolNumber, const std::string& name);
    bool NickLdName(const std::string& ldNumber, const std::string& name);

    // storageType "FC/SAS" (the array's protocol decides fc or sas) or
    // "ISCSI"; any other runs the line as it stood before.
    bool AddLdset(const std::string& ldset, const std::string& storageType);
    // lun empty: the array chooses.
    bool AddLdsetId(const std::string& ldset, const std::string& ld, const std::string& lun);
    // pathType empty: the path is a WWPN.
    bool AddLdsetPath(const std::string& ldset, const std::string& pathType, const std::string& path);
    bool AddLdsetInitiator(const std::string& ldset, const std::string& initiator);
    bool DeleteLdset(const std::string& ldset);
    bool DeleteLdsetLd(const std::string& ldset, const std::string& ld);
    bool DeleteLdsetLdAll(const std::string& ldset);
    bool DeleteLdsetPath(const std::string& ldset, const std::string& pathType, const std::string& path);
    bool DeleteLdsetInitiator(const std::string& ldset, const std::string& initiator);
    bool SraBind(const std::string& poolNumber, unsigned long long size);
    bool SraUnbind(const std::string& poolNumber);
    bool SraExpand(const std::string& poolNumber, unsigned long long size);
    bool GenerationAdd(const std::string& baseVolume, const std::string& poolNumber, const std::string& svName,
                       int count);
    bool GenerationDel(const std::string& baseVolume, int count);
    bool ChangeLdsetName(const std::string& oldName, const std::string& newName);

    // The RAID text of the tool's -raid option: 2 "1", 6 "5", 8 "6",
    // 10 "TM", anything else "".
    static std::string RaidText(int raidCode);

private:
    bool checkWord(bool valid, const char* what, const std::string& value);
};

}  // namespace orvsmis

#endif
