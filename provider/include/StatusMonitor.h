#ifndef ORVSMIS_STATUSMONITOR_H
#define ORVSMIS_STATUSMONITOR_H

#include <stdint.h>

#include <atomic>

namespace orvsmis {

// The link to the local polling daemon: it logs in over TCP on 127.0.0.1,
// compares each alarm report with the last one and wakes the view thread when
// something changed.

static const uint32_t TELEGRAM_LOGIN = 0x23000002;
static const uint32_t TELEGRAM_LOGOUT = 0x23000102;
static const uint32_t TELEGRAM_ALARM_REPORT = 0x23000301;
static const char TELEGRAM_ID_PROVIDER = '$';
static const char TELEGRAM_ID_DAEMON = '#';

static const int TELEGRAM_HEAD_SIZE = 48;
static const int TELEGRAM_CONTROL_SIZE = 96;
static const int ALARM_RESULT_OFFSET = 34;    // in the report's body
static const int ALARM_REPORT_OFFSET = 160;   // in the report's body
static const int ALARM_REPORT_SIZE = 256;
// The longest telegram taken from the daemon; a longer length field means the
// stream is broken, and the link is dropped unread.
static const uint32_t TELEGRAM_MAX_LENGTH = 65536;

// The common head of every telegram (48 bytes, machine byte order).
struct socket_common {
    char magic[4];          // "SGM" and a zero byte
    uint32_t length;        // whole telegram, head included
    uint32_t reserved1;
    uint16_t constant1;     // 1
    uint16_t constant2;     // 1
    uint32_t code;
    uint8_t constant3;      // 1
    char sender;
    char receiver;
    uint8_t constant4;      // 1
    uint32_t pid;
    uint32_t time;
    uint8_t reserved2[16];
};

struct _smisheader {
    uint8_t reserved[32];
};

struct AlarmEventControl {
    uint16_t reserved1;
    uint8_t request;        // 1 in login, 0 in logout
    uint8_t reserved2;
    uint32_t reserved3;     // network byte order
    uint32_t reserved4;
    uint32_t reserved5;
};

// The daemon's report record, kept only to be compared with the next one.
struct AlarmReport {
    uint8_t data[ALARM_REPORT_SIZE];
};

// Module state of the link.
extern bool first_alarmrpt;
extern std::atomic<bool> stop;
extern AlarmReport old_alarmrpt;

void* sm_thread(void* arg);
void pollingMonitorLoop();
void signal_usr2(int sig);

// Asks the view thread for a load of the given sides. 0 or -1.
int sendGetDataSignal(int logical, int physical);

// Login and logout. 0 or -1.
bool isHubPollingReady();
int getHubPollingPort(unsigned short* port);
int connectToHubnPolling(int* fd);
int loginHubcPolling(int* fd);
int logoutHubcPolling(int fd);
int sendLoginTelegram(int fd);
int sendLogoutTelegram(int fd);

// The telegram codec.
void fillCommonHead(socket_common* head, uint32_t length, uint32_t code);
// A whole login (login true) or logout telegram into out (96 bytes).
void buildControlTelegram(uint8_t* out, bool login);
// Checks a received head: magic and a length from the head's size to
// TELEGRAM_MAX_LENGTH.
bool checkCommonHead(const socket_common& head);

// Reads one telegram: 0 with the body (malloc'ed, the caller frees it) and
// its size, -2 when the peer closed, -1 on a broken telegram or error.
int recvAlarmReport(int fd, socket_common* head, uint8_t** body, int* size);

// Takes the report record out of a body and into host byte order: -1 when
// the daemon says it could not get the report or the body is too short.
int extractAlarmReport(const uint8_t* body, int size, AlarmReport* report);

// 1 when the side's fields differ between the two reports, 2 when not.
int logicalDiskArrayStatus(const AlarmReport& now, const AlarmReport& last);
int physicalDiskArrayStatus(const AlarmReport& now, const AlarmReport& last);

// Compares a report body with the last one and wakes the view thread on a
// change. 0 or -1.
int parseAlarmReport(const uint8_t* body, int size);

}  // namespace orvsmis

#endif
