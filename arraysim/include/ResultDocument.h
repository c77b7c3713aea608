#pragma once
// The answer of a configuration or replication command: a CMD_REQUEST with
// its RETURN_CODE and a RETURN_MSG of three units, "message_id" ("Vex" and
// digits), "message_content" and "return_time", in XML or as plain text.

#include <ostream>
#include <string>

#include "CommandError.h"

namespace arraysim {

class ResultDocument {
public:
    ResultDocument(int returnCode, std::string messageId, std::string content, long long returnTimeSeconds);

    static ResultDocument Success(const std::string& content, long long returnTimeSeconds);
    static ResultDocument Failure(const CommandError& error, long long returnTimeSeconds);

    int ReturnCode() const { return m_returnCode; }
    const std::string& MessageId() const { return m_messageId; }
    const std::string& Content() const { return m_content; }

    // The XML document (root REQUEST), written through libxml2. Throws
    // std::runtime_error when libxml2 cannot write it.
    std::string Xml() const;

    // The plain form: "<message_id> <message_content>" and the time.
    std::string Text() const;

    // Writes the answer as the tool would: the XML to out, or the plain form
    // to out on success and to err on failure. Returns the exit status, which
    // equals RETURN_CODE.
    int Write(bool xml, std::ostream& out, std::ostream& err) const;

private:
    int m_returnCode;
    std::string m_messageId;
    std::string m_content;
    long long m_returnTime;
};

}  // namespace arraysim
