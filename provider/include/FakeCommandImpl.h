#ifndef ORVSMIS_FAKECOMMANDIMPL_H
#define ORVSMIS_FAKECOMMANDIMPL_H

#include <list>
#include <string>

#include "CommandImpl.h"

namespace orvsmis {

// Replays saved result documents instead of running the tools. The files for
// a tool are listed under "PollingSimulator"/"<tool>_Data" and read from
// "PollingSimulator"/"DataFilePath"; they are given out in a cycle.
class FakeCommandImpl : public CommandImpl {
public:
    FakeCommandImpl();

    virtual bool Execute(const std::string& commandLine, XMLParser& parser);

private:
    bool m_returnValue;
    std::string m_returnCode;
    std::string m_returnMessage;
    std::string m_dataPath;
    std::list<std::string> m_fileList;
    int m_nextFileIndex;
};

}  // namespace orvsmis

#endif
