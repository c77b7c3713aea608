#ifndef ORVSMIS_RESULTINFO_H
#define ORVSMIS_RESULTINFO_H

#include <string>

namespace orvsmis {

// The result of a check: whether it passed, the message id ("00020" ...) and
// the message text.
class ResultInfo {
public:
    ResultInfo() : success(true) {}
    ResultInfo(bool ok, const std::string& id, const std::string& text)
        : success(ok), code(id), message(text) {}

    void Set(bool ok, const std::string& id, const std::string& text) {
        success = ok;
        code = id;
        message = text;
    }

    // The CIM status a failed check is reported with: always
    // CIM_ERR_INVALID_PARAMETER (4).
    int MapOrvCodeToCimomCode() const { return 4; }

    bool success;
    std::string code;
    std::string message;
};

}  // namespace orvsmis

#endif
