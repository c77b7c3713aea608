#include "OutputFormat.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>

#include <sys/stat.h>

namespace arraysim {

namespace {

std::string trimmed(std::string text) {
    const auto first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos) return {};
    const auto last = text.find_last_not_of(" \t\r\n");
    return text.substr(first, last - first + 1);
}

}  // namespace

bool OutputFormat::XmlChosen(const std::string& stateDir) {
    if (const char* env = std::getenv("_OUTFMTSET")) {
        const std::string value = trimmed(env);
        if (value == "xml") return true;
        if (value == "text") return false;
    }
    std::ifstream in(stateDir + "/outfmt");
    std::string recorded;
    if (in && std::getline(in, recorded)) return trimmed(recorded) == "xml";
    return false;
}

void OutputFormat::Record(const std::string& stateDir, bool xml) {
    std::string partial;
    for (std::size_t i = 1; i <= stateDir.size(); ++i)
        if (i == stateDir.size() || stateDir[i] == '/') ::mkdir(stateDir.substr(0, i).c_str(), 0755);
    const std::string path = stateDir + "/outfmt";
    const std::string temp = path + ".tmp";
    {
        std::ofstream out(temp, std::ios::trunc);
        out << (xml ? "xml" : "text") << "\n";
        out.flush();
        if (!out) throw std::runtime_error("cannot write " + temp + ": " + std::strerror(errno));
    }
    if (std::rename(temp.c_str(), path.c_str()) != 0)
        throw std::runtime_error("cannot replace " + path + ": " + std::strerror(errno));
}

void OutputFormat::Register(ToolRegistry& registry, const std::string& stateDir) {
    registry.Add("outfmtset", [stateDir](ToolInvocation& run) {
        if (run.args.size() != 1 || (run.args[0] != "xml" && run.args[0] != "text")) {
            *run.err << "outfmtset: usage: outfmtset xml|text" << std::endl;
            return 1;
        }
        try {
            Record(stateDir, run.args[0] == "xml");
        } catch (const std::exception& e) {
            *run.err << "outfmtset: " << e.what() << std::endl;
            return 1;
        }
        return 0;
    });
}

}  // namespace arraysim
