#include "ExecCmd.h"

#include <errno.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include "SmisTrace.h"
#include "XMLParser.h"

namespace orvsmis {

namespace {
const int READ_BUFFER_SIZE = 1024;
}  // namespace

char* passSpace(char* buffer, int* count) {
    while (*count > 0) {
        if (*buffer == '<') return buffer;
        ++buffer;
        --*count;
    }
    return NULL;
}

std::string findCommandName(const std::string& command) {
    std::string::size_type blank = command.find(' ');
    return blank == std::string::npos ? command : command.substr(0, blank);
}

bool IsSafeCommandText(const std::string& command) {
    static const char* const shellSpecial = "\"'`$\\;&|<>(){}*?[]~#!";
    for (std::string::size_type i = 0; i < command.size(); ++i) {
        unsigned char c = static_cast<unsigned char>(command[i]);
        if (c < 0x20 || c == 0x7f) return false;
        if (strchr(shellSpecial, c) != NULL) return false;
    }
    return true;
}

int LocalCMDRequest(XMLParser* parser, const char* line) {
    if (parser == NULL || line == NULL) {
        SMIS_TRACE(LEVEL1, "Error: a command was run without a parser for its result");
        return -1;
    }
    FILE* stream = NULL;
    for (;;) {
        // "e": the pipe is closed on exec, so that commands run at the same
        // moment on other threads do not hold each other's output open.
        stream = popen(line, "re");
        if (stream != NULL) break;
        if (errno == EAGAIN) continue;
        SMIS_TRACE(LEVEL1, "popen failed, Error code: %d", errno);
        return -1;
    }

    int fd = fileno(stream);
    char buffer[READ_BUFFER_SIZE];
    bool documentStarted = false;
    for (;;) {
        memset(buffer, 0, sizeof(buffer));
        // One byte stays zero: the parser may keep the chunk as a C string.
        ssize_t got = read(fd, buffer, sizeof(buffer) - 1);
        if (got < 0) {
            if (errno == EINTR) continue;
            SMIS_TRACE(LEVEL1, "read Vexview's result failed, Error code: %d", errno);
            pclose(stream);
            return -1;
        }
        if (got == 0) break;
        char* data = buffer;
        int count = static_cast<int>(got);
        if (!documentStarted) {
            // Whatever the tool writes before its document is dropped.
            data = passSpace(buffer, &count);
            if (data == NULL) continue;
            documentStarted = true;
        }
        if (!parser->LoadChunk(data, count, 0)) {
            SMIS_TRACE(LEVEL1, "XML data parsed failed, parser->LoadChunk(0)");
            pclose(stream);
            return -1;
        }
    }

    SMIS_TRACE(LEVEL4, "read Vexview's result done!");
    memset(buffer, 0, sizeof(buffer));
    if (!parser->LoadChunk(buffer, 0, 1)) {
        SMIS_TRACE(LEVEL1, "XML data parsed failed, parser->LoadChunk(1)");
        pclose(stream);
        return -1;
    }
    SMIS_TRACE(LEVEL4, "XML data parsed succesfully!");
    // pclose closes the descriptor too.
    pclose(stream);
    return 0;
}

int RemoteCMDRequest(XMLParser*, const char* line) {
    SMIS_TRACE(LEVEL1, "Error: no transport to a remote array, command not run: %s", line ? line : "");
    return -1;
}

int ExecCMD(XMLParser* parser, const char* line) { return LocalCMDRequest(parser, line) == -1 ? -1 : 0; }

}  // namespace orvsmis
