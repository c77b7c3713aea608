#pragma once
// A refusal of a view or query tool: the RETURN_CODE (also the exit status)
// and the message the tool reports with it.

#include <stdexcept>
#include <string>

namespace arraysim {

class ViewError : public std::runtime_error {
public:
    // Return codes of the view and query tools.
    static constexpr int kBadArguments = 1;   // malformed or unknown option
    static constexpr int kNotFound = 2;       // a named volume or pair the array does not have
    static constexpr int kFileError = 3;      // the subject file cannot be read or holds bad lines
    static constexpr int kInternal = 9;       // the state cannot be read or written out

    ViewError(int returnCode, const std::string& message)
        : std::runtime_error(message), m_returnCode(returnCode) {}

    int ReturnCode() const { return m_returnCode; }

    // "Vex" and five digits, e.g. Vex20001 for the first code.
    std::string MessageId() const;

private:
    int m_returnCode;
};

}  // namespace arraysim
