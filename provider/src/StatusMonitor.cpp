#include "StatusMonitor.h"

#include <arpa/inet.h>
#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>

#include <string>

#include "ExecVexview.h"
#include "FixedPath.h"
#include "SmisSocket.h"
#include "SmisStatusRecorder.h"
#include "SmisTrace.h"
#include "ThreadSyncTool.h"

namespace orvsmis {

bool first_alarmrpt = true;
std::atomic<bool> stop(false);
AlarmReport old_alarmrpt;

namespace {

const char* const HUB_PORT_FILE = "/opt/HubMonitor/HubMonitor.port";
const char* const HUB_PID_FILE = "/var/run/HubMonitor.pid";
const int READY_WAIT_MS = 160000;
const int READY_PAUSE_MS = 100;
const int SELECT_TIMEOUT_MS = 500;

struct FieldSpan {
    int offset;
    int size;
};

// The record's multi-byte fields, converted from network order on arrival.
const int SHORT_FIELDS[] = {0,   86,  88,  98,  100, 102, 104, 106, 108, 116, 120, 130, 132, 134,
                            136, 138, 140, 142, 160, 164, 174, 180, 182, 184, 186, 216, 254};
const int LONG_FIELDS[] = {44, 112};

// The fields that tell a change of the logical and of the physical side, in
// the order they are compared.
const FieldSpan LOGICAL_FIELDS[] = {{74, 1},  {78, 8},  {86, 2},  {88, 2},  {90, 7},  {98, 10}, {123, 1},
                                    {142, 2}, {140, 2}, {163, 1}, {108, 2}, {110, 2}, {116, 2}, {120, 2},
                                    {122, 1}, {130, 4}, {136, 2}, {160, 2}, {162, 1}, {164, 2}, {168, 4},
                                    {174, 2}, {180, 2}, {182, 2}, {184, 2}, {186, 2}, {216, 2}};
const FieldSpan PHYSICAL_FIELDS[] = {{4, 1},   {16, 1},  {17, 1},  {20, 8},  {28, 4},  {34, 8},
                                     {58, 1},  {59, 1},  {62, 1},  {63, 1},  {134, 2}, {123, 1},
                                     {142, 2}, {140, 2}, {163, 1}, {138, 2}, {129, 1}, {192, 8},
                                     {200, 8}, {208, 8}, {66, 8},  {216, 2}};

template <size_t N>
int compareSpans(const FieldSpan (&spans)[N], const AlarmReport& now, const AlarmReport& last) {
    for (size_t i = 0; i < N; ++i) {
        if (memcmp(now.data + spans[i].offset, last.data + spans[i].offset, spans[i].size) != 0) return 1;
    }
    return 2;
}

const char* changeWord(int status) { return status == 1 ? "changed" : "unchanged"; }

void closeLink(int* fd, uint8_t** body) {
    if (*fd >= 0) closeSocket(*fd);
    *fd = -1;
    free(*body);
    *body = NULL;
}

}  // namespace

void signal_usr2(int) { stop = true; }

int sendGetDataSignal(int logical, int physical) {
    if (smis_mutex_lock(&status_mutex) != 0) return -1;
    ds_.wakeup = 1;
    ds_.logical = logical;
    ds_.physical = physical;
    if (smis_mutex_unlock(&status_mutex) != 0) return -1;
    if (smis_cond_signal(&status_cond) != 0) return -1;
    return 0;
}

bool isHubPollingReady() {
    const std::string pidFile = FixedPath::Resolve(HUB_PID_FILE);
    for (int waited = 0; waited < READY_WAIT_MS && !stop; waited += READY_PAUSE_MS) {
        if (access(pidFile.c_str(), F_OK) == 0) return true;
        SMIS_TRACE(LEVEL2, "Error: HubcPolling not ready, retry to connect to it!");
        sleepForMilliSecond(READY_PAUSE_MS);
    }
    SMIS_TRACE(LEVEL1, "Error: give up connectting to HubPolling!");
    return false;
}

int getHubPollingPort(unsigned short* port) {
    const std::string portFile = FixedPath::Resolve(HUB_PORT_FILE);
    int fd = open(portFile.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        SMIS_TRACE(LEVEL1, "syscall open, Error code: %d", errno);
        return -1;
    }
    // Two bytes, the port in network order just as the daemon wrote it.
    unsigned char bytes[2];
    int got = 0;
    while (got < 2) {
        ssize_t n = read(fd, bytes + got, static_cast<size_t>(2 - got));
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        got += static_cast<int>(n);
    }
    int err = errno;
    close(fd);
    if (got != 2) {
        SMIS_TRACE(LEVEL1, "syscall read, Error code: %d", got < 0 ? err : 0);
        return -1;
    }
    memcpy(port, bytes, 2);
    return 0;
}

int connectToHubnPolling(int* fd) {
    unsigned short port = 0;
    if (getHubPollingPort(&port) != 0) return -1;
    int s = -1;
    // Close-on-exec: the tools that the module starts must not hold the link.
    if (openSocket(&s, AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0) != 0) return -1;
    struct sockaddr_in addr;
    if (getSockAddr("127.0.0.1", port, AF_INET, &addr) != 0 ||
        connectPeer(s, reinterpret_cast<struct sockaddr*>(&addr), sizeof(addr)) != 0) {
        closeSocket(s);
        return -1;
    }
    *fd = s;
    return 0;
}

void fillCommonHead(socket_common* head, uint32_t length, uint32_t code) {
    memset(head, 0, sizeof(*head));
    memcpy(head->magic, "SGM", 4);
    head->length = length;
    head->constant1 = 1;
    head->constant2 = 1;
    head->code = code;
    head->constant3 = 1;
    head->sender = TELEGRAM_ID_PROVIDER;
    head->receiver = TELEGRAM_ID_DAEMON;
    head->constant4 = 1;
    head->pid = static_cast<uint32_t>(getpid());
    head->time = static_cast<uint32_t>(::time(NULL));
}

void buildControlTelegram(uint8_t* out, bool login) {
    memset(out, 0, TELEGRAM_CONTROL_SIZE);
    socket_common head;
    fillCommonHead(&head, TELEGRAM_CONTROL_SIZE, login ? TELEGRAM_LOGIN : TELEGRAM_LOGOUT);
    memcpy(out, &head, sizeof(head));
    // The SMIS head that follows stays all zero.
    AlarmEventControl control;
    memset(&control, 0, sizeof(control));
    control.request = login ? 1 : 0;
    memcpy(out + sizeof(socket_common) + sizeof(_smisheader), &control, sizeof(control));
}

bool checkCommonHead(const socket_common& head) {
    return memcmp(head.magic, "SGM", 4) == 0 && head.length >= static_cast<uint32_t>(TELEGRAM_HEAD_SIZE) &&
           head.length <= TELEGRAM_MAX_LENGTH;
}

namespace {
int sendControlTelegram(int fd, bool login) {
    uint8_t telegram[TELEGRAM_CONTROL_SIZE];
    buildControlTelegram(telegram, login);
    return sendData(fd, telegram, TELEGRAM_CONTROL_SIZE) == 0 ? 0 : -1;
}
}  // namespace

int sendLoginTelegram(int fd) { return sendControlTelegram(fd, true); }

int sendLogoutTelegram(int fd) { return sendControlTelegram(fd, false); }

int loginHubcPolling(int* fd) {
    if (!isHubPollingReady()) {
        SMIS_TRACE(LEVEL1, "Error: HubPolling is not ready, Please check status of HubPolling.");
        return -1;
    }
    int s = -1;
    if (connectToHubnPolling(&s) != 0) return -1;
    if (sendLoginTelegram(s) != 0) {
        closeSocket(s);
        return -1;
    }
    *fd = s;
    return 0;
}

int logoutHubcPolling(int fd) { return sendLogoutTelegram(fd); }

int recvAlarmReport(int fd, socket_common* head, uint8_t** body, int* size) {
    *body = NULL;
    *size = 0;
    int got = recvData(fd, head, TELEGRAM_HEAD_SIZE);
    if (got == 0) return -2;
    if (got != TELEGRAM_HEAD_SIZE) {
        SMIS_TRACE(LEVEL1, "recvData error!");
        return -1;
    }
    if (!checkCommonHead(*head)) {
        // Out of step with the daemon, or not the daemon at all: nothing after
        // this head can be trusted, the length least of all.
        SMIS_TRACE(LEVEL1, "Error: broken telegram head (length %u, code 0x%08x), link dropped.",
                   static_cast<unsigned>(head->length), static_cast<unsigned>(head->code));
        return -1;
    }
    int bodySize = static_cast<int>(head->length) - TELEGRAM_HEAD_SIZE;
    uint8_t* data = static_cast<uint8_t*>(calloc(1, bodySize > 0 ? static_cast<size_t>(bodySize) : 1));
    if (data == NULL) {
        SMIS_TRACE(LEVEL1, "Error: malloc error, Error code: %d", errno);
        return -1;
    }
    if (bodySize > 0 && recvData(fd, data, bodySize) != bodySize) {
        free(data);
        return -1;
    }
    *body = data;
    *size = bodySize;
    return 0;
}

int extractAlarmReport(const uint8_t* body, int size, AlarmReport* report) {
    if (body == NULL || size < ALARM_REPORT_OFFSET + ALARM_REPORT_SIZE) {
        SMIS_TRACE(LEVEL1, "Error: alarm report of %d bytes is too short, link dropped.", size);
        return -1;
    }
    if (body[ALARM_RESULT_OFFSET] != 0) {
        SMIS_TRACE(LEVEL1, "HubPolling get alarmreport failed!");
        return -1;
    }
    memcpy(report->data, body + ALARM_REPORT_OFFSET, ALARM_REPORT_SIZE);
    for (size_t i = 0; i < sizeof(SHORT_FIELDS) / sizeof(SHORT_FIELDS[0]); ++i) {
        uint16_t v;
        memcpy(&v, report->data + SHORT_FIELDS[i], 2);
        v = ntohs(v);
        memcpy(report->data + SHORT_FIELDS[i], &v, 2);
    }
    for (size_t i = 0; i < sizeof(LONG_FIELDS) / sizeof(LONG_FIELDS[0]); ++i) {
        uint32_t v;
        memcpy(&v, report->data + LONG_FIELDS[i], 4);
        v = ntohl(v);
        memcpy(report->data + LONG_FIELDS[i], &v, 4);
    }
    return 0;
}

int logicalDiskArrayStatus(const AlarmReport& now, const AlarmReport& last) {
    return compareSpans(LOGICAL_FIELDS, now, last);
}

int physicalDiskArrayStatus(const AlarmReport& now, const AlarmReport& last) {
    return compareSpans(PHYSICAL_FIELDS, now, last);
}

int parseAlarmReport(const uint8_t* body, int size) {
    AlarmReport report;
    if (extractAlarmReport(body, size, &report) != 0) return -1;
    int logical = 2;
    int physical = 2;
    if (first_alarmrpt) {
        // The first report after a login: whatever happened while the link
        // was down must be read.
        logical = 1;
        physical = 1;
        first_alarmrpt = false;
    } else {
        logical = logicalDiskArrayStatus(report, old_alarmrpt);
        physical = physicalDiskArrayStatus(report, old_alarmrpt);
    }
    SMIS_TRACE(LEVEL3, "Logical components %s, physical components %s", changeWord(logical),
               changeWord(physical));
    if (logical != 1 && physical != 1) return 0;
    if (sendGetDataSignal(1, 1) == -1) return -1;
    old_alarmrpt = report;
    return 0;
}

void pollingMonitorLoop() {
    struct sigaction action;
    memset(&action, 0, sizeof(action));
    action.sa_handler = signal_usr2;
    sigemptyset(&action.sa_mask);
    sigaction(SIGUSR2, &action, NULL);

    first_alarmrpt = true;
    stop = false;
    bool connected = false;
    int fd = -1;
    uint8_t* body = NULL;

    while (!stop) {
        if (!connected) {
            printf("Polling closed, try to connect\n");
            fflush(stdout);
            if (loginHubcPolling(&fd) != 0) {
                SMIS_TRACE(LEVEL1, "login HubPolling failed, i will retry later!");
                RecordPollingStatus(2, "abnormal (polling)");
                sleepForMilliSecond(1000);
                continue;
            }
            first_alarmrpt = true;
            SMIS_TRACE(LEVEL2, "logined HubPolling!");
            RecordPollingStatus(1, "ready");
            connected = true;
        }

        // poll rather than select: the server's process may hold descriptors
        // beyond what an fd_set can name.
        struct pollfd waitFor;
        waitFor.fd = fd;
        waitFor.events = POLLIN;
        waitFor.revents = 0;
        int ready = poll(&waitFor, 1, SELECT_TIMEOUT_MS);
        if (ready < 0) {
            if (errno == EINTR) continue;
            SMIS_TRACE(LEVEL1, "select failed, Error code: %d", errno);
            closeLink(&fd, &body);
            connected = false;
            continue;
        }
        if (ready == 0) continue;

        socket_common head;
        int size = 0;
        if (recvAlarmReport(fd, &head, &body, &size) < 0) {
            closeLink(&fd, &body);
            connected = false;
            continue;
        }
        if (head.sender == TELEGRAM_ID_DAEMON && head.code == TELEGRAM_ALARM_REPORT) {
            if (parseAlarmReport(body, size) == -1) {
                closeLink(&fd, &body);
                connected = false;
                continue;
            }
        }
        free(body);
        body = NULL;
    }

    if (connected) {
        if (logoutHubcPolling(fd) != 0) SMIS_TRACE(LEVEL1, "logout HubPolling failed");
    }
    closeLink(&fd, &body);
}

void* sm_thread(void*) {
    try {
        pollingMonitorLoop();
    } catch (...) {
        SMIS_TRACE(LEVEL1, "Error: polling monitor ended by an unexpected exception.");
    }
    return NULL;
}

}  // namespace orvsmis
