#ifndef ORVSMIS_CFGRESULTPARSER_H
#define ORVSMIS_CFGRESULTPARSER_H

#include <string>

#include "XMLParser.h"

namespace orvsmis {

class ResultInfo;

// Reads the answer of the array's configuration tool: whether the command
// was carried out, and the message that explains it. The fields keep the
// values of the last document parsed; "Unknown" until then.
class CfgResultParser : public XMLParser {
public:
    CfgResultParser();

    // Reads the loaded document's CMD_REQUEST element. True when the
    // document could be read, whatever the command's own result: that is
    // IsSuccess. False when nothing is loaded or the element is missing.
    bool Parse();

    // Copies success, message id and message content.
    void GetInfo(ResultInfo& out) const;

    bool IsSuccess() const { return m_success; }
    const std::string& GetMessageId() const { return m_messageId; }
    const std::string& GetMessageContent() const { return m_messageContent; }
    const std::string& GetReturnTime() const { return m_returnTime; }

private:
    void reset();

    bool m_success;
    std::string m_messageId;
    std::string m_messageContent;
    std::string m_returnTime;
};

}  // namespace orvsmis

#endif
