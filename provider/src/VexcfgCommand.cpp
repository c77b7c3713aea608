#include "VexcfgCommand.h"

#include <cctype>
#include <cstdio>
#include <vector>

#include "ArrayRawData.h"
#include "CommandTextCheck.h"
#include "CreateLdJobDetail.h"
#include "CreatePoolJobDetail.h"
#include "DataConnector.h"
#include "DeleteLdJobDetail.h"
#include "DeletePoolJobDetail.h"
#include "ModifyLdJobDetail.h"
#include "ModifyPoolJobDetail.h"
#include "SmisTrace.h"

namespace orvsmis {

namespace {

const unsigned long long MiB = 1024ULL * 1024ULL;
const unsigned long long GiB = MiB * 1024ULL;

std::string decimal(unsigned long long value) {
    char text[32];
    std::snprintf(text, sizeof text, "%llu", value);
    return text;
}

bool isRaidText(const std::string& text) { return text == "1" || text == "5" || text == "6" || text == "TM"; }

bool isOnOff(const std::string& text) { return text == "on" || text == "off"; }

}  // namespace

VexcfgCommand::VexcfgCommand() {}

VexcfgCommand::VexcfgCommand(CommandImpl* impl) : ConfigCommand(impl) {}

bool VexcfgCommand::checkWord(bool valid, const char* what, const std::string& value) {
    if (valid) return true;
    refuse(std::string("the ") + what + " \"" + CommandTextCheck::Printable(value) +
           "\" is not a value the array takes; the command was not run");
    return false;
}

std::string VexcfgCommand::RaidText(int raidCode) {
    switch (raidCode) {
    case 2: return "1";
    case 6: return "5";
    case 8: return "6";
    case 10: return "TM";
    default: return "";
    }
}

bool VexcfgCommand::PoolBind(const CreatePoolDetailArgs& args) {
    const bool withBase = args.raidCode == 6 || args.raidCode == 8;
    const bool isVirtual = args.poolType == "virtual";
    if (!checkWord(args.poolType == "dynamic" || isVirtual, "pool type", args.poolType) ||
        !checkWord(CommandTextCheck::IsHexNumber(args.poolNumber), "pool number", args.poolNumber) ||
        !checkWord(CommandTextCheck::IsArrayName(args.poolName), "pool name", args.poolName) ||
        !checkWord(isRaidText(args.raidText), "RAID", args.raidText) ||
        !checkWord(!withBase || args.basePd > 0, "base disk count", std::to_string(args.basePd)) ||
        !checkWord(CommandTextCheck::IsHexNumber(args.pdg), "disk group", args.pdg) ||
        !checkWord(CommandTextCheck::IsPdnList(args.pdn), "disk list", args.pdn) ||
        !checkWord(!isVirtual || args.capacity / GiB > 0, "virtual capacity", decimal(args.capacity)))
        return false;
    std::string line = "Vexcfg poolbind -type " + args.poolType + " -poolnumber " + args.poolNumber +
                       "h -poolname " + args.poolName + " -raid " + args.raidText + " ";
    // The two blanks before -pdg of a RAID1 or RAID-TM line are harmless to
    // the tool, which splits at any run of blanks.
    if (withBase) line += " -basepd " + decimal(static_cast<unsigned long long>(args.basePd)) + " ";
    line += " -pdg " + args.pdg + "h -pdn " + args.pdn;
    if (isVirtual) line += " -capacity " + decimal(args.capacity / GiB);
    return run(line);
}

bool VexcfgCommand::PoolExpand(const ModifyPoolDetailArgs& args) {
    if (!checkWord(isOnOff(args.rebuild), "rebuild mode", args.rebuild) ||
        !checkWord(CommandTextCheck::IsHexNumber(args.poolNumber), "pool number", args.poolNumber) ||
        !checkWord(CommandTextCheck::IsHexNumber(args.pdg), "disk group", args.pdg) ||
        !checkWord(CommandTextCheck::IsPdnList(args.pdn), "disk list", args.pdn))
        return false;
    return run("Vexcfg poolexpand -rebuild " + args.rebuild + " -poolnumber " + args.poolNumber + "h -pdg " +
               args.pdg + "h -pdn " + args.pdn);
}

bool VexcfgCommand::VirtualPoolCapacityExpand(const ModifyPoolDetailArgs& args) {
    if (args.poolType != "virtual") return true;
    if (!checkWord(CommandTextCheck::IsHexNumber(args.poolNumber), "pool number", args.poolNumber) ||
        !checkWord(args.capacity / GiB > 0, "virtual capacity", decimal(args.capacity)))
        return false;
    return run("Vexcfg poolexpand -rebuild off -poolnumber " + args.poolNumber + "h" + " -capacity " +
               decimal(args.capacity / GiB));
}

bool VexcfgCommand::PoolUnbind(const DeletePoolDetailArgs& args) {
    if (!checkWord(CommandTextCheck::IsHexNumber(args.poolNumber), "pool number", args.poolNumber)) return false;
    return run("Vexcfg poolunbind -poolnumber " + args.poolNumber + "h");
}

bool VexcfgCommand::LdBind(const CreateLdDetailArgs& args) {
    if (!checkWord(CommandTextCheck::IsHexNumber(args.poolNumber), "pool number", args.poolNumber) ||
        !checkWord(CommandTextCheck::IsHexNumber(args.ldNumber), "LD number", args.ldNumber) ||
        !checkWord(args.threshold >= 0 && args.threshold <= 100, "threshold",
                   std::to_string(args.threshold)))
        return false;
    std::string line = "Vexcfg ldbind -poolnumber " + args.poolNumber + "h " + "-ldn " + args.ldNumber + "h " +
                       "-capacity " + decimal(args.size / MiB) + " -unit mb" + " -mode exc";
    if (args.threshold != 0) line += " -thr " + decimal(static_cast<unsigned long long>(args.threshold));
    return run(line);
}

bool VexcfgCommand::LdExpand(const ModifyLdDetailArgs& args) {
    if (!checkWord(CommandTextCheck::IsHexNumber(args.ldNumber), "LD number", args.ldNumber)) return false;
    return run("Vexcfg ldexpand -ldn " + args.ldNumber + "h " + "-capacity " + decimal(args.size / MiB) +
               " -unit mb");
}

bool VexcfgCommand::LdUnbind(const DeleteLdDetailArgs& args) {
    if (!checkWord(CommandTextCheck::IsHexNumber(args.ldNumber), "LD number", args.ldNumber)) return false;
    return run("Vexcfg ldunbind -ldn " + args.ldNumber + "h");
}

bool VexcfgCommand::NickPoolName(const std::string& poolNumber, const std::string& name) {
    if (!checkWord(CommandTextCheck::IsHexNumber(poolNumber), "pool number", poolNumber) ||
        !checkWord(CommandTextCheck::IsArrayName(name), "pool name", name))
        return false;
    return run("Vexcfg nickname -poolnumber " + poolNumber + "h -newname " + name);
}

bool VexcfgCommand::NickLdName(const std::string& ldNumber, const std::string& name) {
    if (!checkWord(CommandTextCheck::IsHexNumber(ldNumber), "LD number", ldNumber) ||
        !checkWord(CommandTextCheck::IsArrayName(name), "LD name", name))
        return false;
    return run("Vexcfg nickname -ldn " + ldNumber + "h -newname :" + name);
}

bool VexcfgCommand::AddLdset(const std::string& ldset, const std::string& storageType) {
    if (!checkWord(CommandTextCheck::IsLdSetName(ldset), "LD set", ldset)) return false;
    if (storageType == "ISCSI") return run("Vexcfg addldset -ldset " + ldset + " -type iscsi");
    if (storageType != "FC/SAS")
        return checkWord(false, "storage type", storageType);
    std::string protocol;
    std::vector<ArrayRawData*> arrays;
    if (DataConnector<ArrayRawData>::QueryData(std::string(), arrays)) protocol = arrays.front()->protocol;
    DataConnector<ArrayRawData>::ReleaseAll(arrays);
    for (char& c : protocol) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return run("Vexcfg addldset -ldset " + ldset + (protocol == "sas" ? " -type sas" : " -type fc"));
}

bool VexcfgCommand::AddLdsetId(const std::string& ldset, const std::string& ld, const std::string& lun) {
    if (!checkWord(CommandTextCheck::IsLdSetName(ldset), "LD set", ldset) ||
        !checkWord(CommandTextCheck::IsNumberWord(ld), "LD number", ld) ||
        !checkWord(lun.empty() || CommandTextCheck::IsHexNumber(lun), "LUN", lun))
        return false;
    std::string line = "Vexcfg addldsetld -ldset " + ldset + " -ldn " + ld;
    if (!lun.empty()) line += " -lun " + lun + "h";
    return run(line);
}

bool VexcfgCommand::AddLdsetPath(const std::string& ldset, const std::string& pathType, const std::string& path) {
    if (!checkWord(CommandTextCheck::IsLdSetName(ldset), "LD set", ldset) ||
        !checkWord(pathType.empty() || CommandTextCheck::IsKeyword(pathType), "path type", pathType) ||
        !checkWord(CommandTextCheck::IsPathText(path), "path", path))
        return false;
    std::string line = "Vexcfg addldsetpath -ldset " + ldset;
    if (!pathType.empty()) line += " -pathtype " + pathType;
    line += " -path " + path;
    return run(line);
}

bool VexcfgCommand::AddLdsetInitiator(const std::string& ldset, const std::string& initiator) {
    if (!checkWord(CommandTextCheck::IsLdSetName(ldset), "LD set", ldset) ||
        !checkWord(CommandTextCheck::IsInitiatorName(initiator), "initiator name", initiator))
        return false;
    return run("Vexcfg addldsetinitiator -ldset " + ldset + " -initiatorname " + initiator);
}

bool VexcfgCommand::DeleteLdset(const std::string& ldset) {
    if (!checkWord(CommandTextCheck::IsLdSetName(ldset), "LD set", ldset)) return false;
    return run("Vexcfg delldset -ldset " + ldset);
}

bool VexcfgCommand::DeleteLdsetLd(const std::string& ldset, const std::string& ld) {
    if (!checkWord(CommandTextCheck::IsLdSetName(ldset), "LD set", ldset) ||
        !checkWord(CommandTextCheck::IsNumberWord(ld), "LD number", ld))
        return false;
    return run("Vexcfg delldsetld -ldset " + ldset + " -ldn " + ld);
}

bool VexcfgCommand::DeleteLdsetLdAll(const std::string& ldset) {
    if (!checkWord(CommandTextCheck::IsLdSetName(ldset), "LD set", ldset)) return false;
    return run("Vexcfg delldsetld -ldset " + ldset + " -all");
}

bool VexcfgCommand::DeleteLdsetPath(const std::string& ldset, const std::string& pathType, const std::string& path) {
    if (!checkWord(CommandTextCheck::IsLdSetName(ldset), "LD set", ldset) ||
        !checkWord(CommandTextCheck::IsKeyword(pathType), "path type", pathType) ||
        !checkWord(CommandTextCheck::IsPathText(path), "path", path))
        return false;
    return run("Vexcfg delldsetpath -ldset " + ldset + " -pathtype " + pathType + " -path " + path);
}

bool VexcfgCommand::DeleteLdsetInitiator(const std::string& ldset, const std::string& initiator) {
    if (!checkWord(CommandTextCheck::IsLdSetName(ldset), "LD set", ldset) ||
        !checkWord(CommandTextCheck::IsInitiatorName(initiator), "initiator name", initiator))
        return false;
    // The line keeps its leading blank and the double blank.
    return run(" Vexcfg  delldsetinitiator -ldset " + ldset + " -initiatorname " + initiator);
}

bool VexcfgCommand::SraBind(const std::string& poolNumber, unsigned long long size) {
    if (!checkWord(CommandTextCheck::IsHexNumber(poolNumber), "pool number", poolNumber)) return false;
    return run("Vexcfg srabind -poolnumber " + poolNumber + "h -capacity " + decimal(size / MiB) + " -capunit " +
               "mb");
}

bool VexcfgCommand::SraUnbind(const std::string& poolNumber) {
    if (!checkWord(CommandTextCheck::IsHexNumber(poolNumber), "pool number", poolNumber)) return false;
    return run("Vexcfg sraunbind -poolnumber " + poolNumber + "h");
}

bool VexcfgCommand::SraExpand(const std::string& poolNumber, unsigned long long size) {
    if (!checkWord(CommandTextCheck::IsHexNumber(poolNumber), "pool number", poolNumber)) return false;
    return run("Vexcfg sraexpand -poolnumber " + poolNumber + "h -capacity " + decimal(size / MiB) + " -capunit " +
               "mb");
}

bool VexcfgCommand::GenerationAdd(const std::string& baseVolume, const std::string& poolNumber,
                                  const std::string& svName, int count) {
    if (!checkWord(CommandTextCheck::IsHexNumber(baseVolume), "base volume", baseVolume) ||
        !checkWord(CommandTextCheck::IsHexNumber(poolNumber), "pool number", poolNumber) ||
        !checkWord(count > 0, "generation count", std::to_string(count)) ||
        !checkWord(CommandTextCheck::IsArrayName(svName), "snapshot volume name", svName))
        return false;
    return run("Vexcfg generationadd -bvn " + baseVolume + "h -poolnumber " + poolNumber + "h -count " +
               decimal(static_cast<unsigned long long>(count)) + " -svname " + svName);
}

bool VexcfgCommand::GenerationDel(const std::string& baseVolume, int count) {
    if (!checkWord(CommandTextCheck::IsHexNumber(baseVolume), "base volume", baseVolume) ||
        !checkWord(count > 0, "generation count", std::to_string(count)))
        return false;
    return run("Vexcfg generationdel -bvn " + baseVolume + "h -count " +
               decimal(static_cast<unsigned long long>(count)));
}

bool VexcfgCommand::ChangeLdsetName(const std::string& oldName, const std::string& newName) {
    if (!checkWord(CommandTextCheck::IsLdSetName(oldName), "LD set", oldName) ||
        !checkWord(CommandTextCheck::IsLdSetName(newName), "new LD set name", newName))
        return false;
    return run("Vexcfg chgldsetname -oldldset " + oldName + " -newldset " + newName);
}

}  // namespace orvsmis
