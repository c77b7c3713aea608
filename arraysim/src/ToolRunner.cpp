#include "ToolRunner.h"

#include <chrono>
#include <cstdio>
#include <ctime>
#include <memory>
#include <sstream>
#include <thread>

#include "FaultStore.h"
#include "StateStore.h"

#include "CopyProgress.h"

namespace arraysim {

namespace {

std::string escaped(const std::string& text) {
    std::string out;
    for (char c : text) {
        switch (c) {
            case '<': out += "&lt;"; break;
            case '>': out += "&gt;"; break;
            case '&': out += "&amp;"; break;
            case '"': out += "&quot;"; break;
            default: out += c;
        }
    }
    return out;
}

std::string nowText() {
    const std::time_t now = std::time(nullptr);
    std::tm local {};
    localtime_r(&now, &local);
    char buffer[32];
    std::strftime(buffer, sizeof buffer, "%Y/%m/%d %H:%M:%S", &local);
    return buffer;
}

// "Vex" and five digits: the failure's code.
std::string messageId(int returnCode) {
    char digits[8];
    std::snprintf(digits, sizeof digits, "%05d", (returnCode < 0 ? -returnCode : returnCode) % 100000);
    return digits;
}

// Moves the copies on to now and gives the array as it then stands. The
// state is read once under the shared lock; only when a copy has moved is it
// changed, under the exclusive lock, reading it again there (another tool may
// have changed it in between).
std::shared_ptr<const ArrayState> advanceCopies(const std::string& stateDir) {
    StateStore store(stateDir);
    if (!store.Exists()) return nullptr;
    const long long nowMillis = std::chrono::duration_cast<std::chrono::milliseconds>(
                                    std::chrono::system_clock::now().time_since_epoch())
                                    .count();
    // An unreadable state is left for the tool itself to report.
    try {
        // Advance leaves the state as it is when nothing moves.
        auto state = std::make_shared<ArrayState>(store.Read());
        if (!CopyProgress::Advance(*state, nowMillis)) return state;
        return std::make_shared<ArrayState>(
            store.Update([nowMillis](ArrayState& current) { CopyProgress::Advance(current, nowMillis); }));
    } catch (const StateError&) {
        return nullptr;
    }
}

}  // namespace

std::string ToolRunner::FailureDocument(int returnCode, const std::string& message) {
    std::ostringstream doc;
    doc << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        << "<REQUEST>\n<CMD_REQUEST>\n"
        << "<RETURN_CODE>" << returnCode << "</RETURN_CODE>\n"
        << "<RETURN_MSG>\n"
        << "<UNIT name=\"message_id\">Vex" << messageId(returnCode) << "</UNIT>\n"
        << "<UNIT name=\"message_content\">" << escaped(message) << "</UNIT>\n"
        << "<UNIT name=\"return_time\">" << nowText() << "</UNIT>\n"
        << "</RETURN_MSG>\n</CMD_REQUEST>\n</REQUEST>\n";
    return doc.str();
}

std::string ToolRunner::SuccessDocument(const std::string& message) {
    std::ostringstream doc;
    doc << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        << "<REQUEST>\n<CMD_REQUEST>\n"
        << "<RETURN_CODE>0</RETURN_CODE>\n"
        << "<RETURN_MSG>\n"
        << "<UNIT name=\"message_id\">Vex" << messageId(0) << "</UNIT>\n"
        << "<UNIT name=\"message_content\">" << escaped(message) << "</UNIT>\n"
        << "<UNIT name=\"return_time\">" << nowText() << "</UNIT>\n"
        << "</RETURN_MSG>\n</CMD_REQUEST>\n</REQUEST>\n";
    return doc.str();
}

std::string ToolRunner::Malform(const std::string& answer) {
    std::string broken = answer;
    // An end tag loses its name, and a bare "<" enters the text: no parser takes that.
    const auto endTag = broken.rfind("</");
    if (endTag != std::string::npos) {
        const auto close = broken.find('>', endTag);
        broken.replace(endTag, close == std::string::npos ? 2 : close - endTag + 1, "</ >");
    }
    broken.insert(broken.size() / 2, "<<&");
    return broken;
}

int ToolRunner::Run(const ToolRegistry& registry, ToolInvocation& invocation, const std::string& stateDir) {
    std::ostream& out = *invocation.out;
    std::ostream& err = *invocation.err;
    const ToolHandler* handler = registry.Find(invocation.tool);
    if (handler == nullptr) {
        err << invocation.tool << ": command not found" << std::endl;
        return 127;
    }
    std::optional<Fault> fault;
    try {
        fault = FaultStore(stateDir).Take(invocation.tool);
    } catch (const std::exception& e) {
        err << invocation.tool << ": " << e.what() << std::endl;
        return 1;
    }
    if (fault && fault->mode == "hang")
        std::this_thread::sleep_for(std::chrono::milliseconds(static_cast<long long>(fault->seconds * 1000)));
    if (fault && fault->mode == "fail") {
        const std::string message = fault->message.empty() ? "command failed" : fault->message;
        if (invocation.xml)
            out << FailureDocument(fault->returnCode, message);
        else
            err << invocation.tool << ": " << message << std::endl;
        out.flush();
        return fault->returnCode;
    }

    if (fault && fault->mode == "lose") {
        // The array says yes and then forgets: the command is answered as
        // carried out, but the state is left as it was.
        const std::string message = fault->message.empty() ? "command accepted" : fault->message;
        if (invocation.xml)
            out << SuccessDocument(message);
        else
            out << "Vex" << messageId(0) << " " << message << std::endl;
        out.flush();
        return 0;
    }

    ToolInvocation inner = invocation;
    if (invocation.tool != "outfmtset") inner.state = advanceCopies(stateDir);

    // The answer is held back only when an armed fault is to change it;
    // otherwise it goes out as the tool writes it.
    const bool altered = fault && (fault->mode == "prefix" || fault->mode == "truncate" ||
                                   fault->mode == "malformed" || fault->mode == "empty");
    std::ostringstream buffer;
    if (altered) inner.out = &buffer;
    int status = 0;
    try {
        status = (*handler)(inner);
    } catch (const std::exception& e) {
        err << invocation.tool << ": " << e.what() << std::endl;
        status = 1;
    }
    if (altered) {
        std::string answer = buffer.str();
        if (fault->mode == "prefix") answer = fault->text + "\n" + answer;
        else if (fault->mode == "truncate") answer = answer.substr(0, answer.size() / 2);
        else if (fault->mode == "malformed") answer = Malform(answer);
        else if (fault->mode == "empty") answer.clear();
        out << answer;
    }
    out.flush();
    return status;
}

}  // namespace arraysim
