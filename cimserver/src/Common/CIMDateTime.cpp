#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/Exception.h>

#include <sys/time.h>
#include <time.h>

#include <cstdio>

PEGASUS_NAMESPACE_BEGIN

const Uint32 CIMDateTime::WILDCARD = 0xFFFFFFFF;

namespace {

const Uint64 kSecond = 1000000ULL;
const Uint64 kMinute = 60 * kSecond;
const Uint64 kHour = 60 * kMinute;
const Uint64 kDay = 24 * kHour;
// Intervals are shorter than 10^8 days.
const Uint64 kIntervalLimit = 100000000ULL * kDay;
// Microseconds from 1 January of year 0 to 1 January 1970.
const Uint64 kUnixEpoch = 62167219200000000ULL;

// Days from 1 January of year 0 to the given date (proleptic Gregorian).
Sint64 daysFromCivil(Sint64 y, unsigned m, unsigned d) {
    y -= m <= 2;
    const Sint64 era = (y >= 0 ? y : y - 399) / 400;
    const unsigned yoe = unsigned(y - era * 400);
    const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + Sint64(doe) + 60;  // day 0 is 0000-01-01, 60 days before 0000-03-01
}

void civilFromDays(Sint64 z, Sint64& y, unsigned& m, unsigned& d) {
    z -= 60;
    const Sint64 era = (z >= 0 ? z : z - 146096) / 146097;
    const unsigned doe = unsigned(z - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    y = Sint64(yoe) + era * 400;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    d = doy - (153 * mp + 2) / 5 + 1;
    m = mp + (mp < 10 ? 3 : -9);
    y += m <= 2;
}

bool leapYear(Sint64 y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; }

unsigned daysInMonth(Sint64 y, unsigned m) {
    static const unsigned days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return m == 2 && leapYear(y) ? 29 : days[m - 1];
}

// Last microsecond of 31 December 9999.
const Uint64 kTimeStampLimit = Uint64(daysFromCivil(10000, 1, 1)) * kDay;

// Positions of the digits of the text form, right to left, that a wildcard
// count covers (the '.' at 14 is skipped).
int digitPosition(Uint32 k) { return k < 6 ? 20 - int(k) : 19 - int(k); }

Uint64 pow10(Uint32 n) {
    Uint64 r = 1;
    while (n--) r *= 10;
    return r;
}

// Granularity in microseconds of a value whose last `wildcards` digits are
// wildcards.
Uint64 granularity(Uint32 wildcards, bool interval) {
    if (wildcards == 0) return 1;
    if (wildcards <= 6) return pow10(wildcards);
    // Whole fields beyond the microseconds: seconds, minutes, hours, then
    // days (intervals) or day, month, year (timestamps), which are left
    // uncompared when wildcarded.
    if (wildcards <= 8) return kSecond * (wildcards == 7 ? 10 : 60);
    if (wildcards <= 10) return kMinute * 60;
    if (wildcards <= 12) return kHour * 24;
    (void)interval;
    return 0;  // everything from the day upwards is a wildcard
}

Uint64 parseDigits(const String& s, Uint32 from, Uint32 n, bool& ok) {
    Uint64 value = 0;
    for (Uint32 i = from; i < from + n; ++i) {
        Uint16 c = s[i];
        if (c < '0' || c > '9') {
            ok = false;
            return 0;
        }
        value = value * 10 + (c - '0');
    }
    return value;
}

}  // namespace

CIMDateTime::CIMDateTime() {}

CIMDateTime::CIMDateTime(const String& str) { set(str); }

CIMDateTime::CIMDateTime(Uint64 usec, Boolean isInterval) {
    if (isInterval ? usec >= kIntervalLimit : usec >= kTimeStampLimit)
        throw DateTimeOutOfRangeException(String(isInterval ? "interval" : "timestamp") +
                                          " beyond the largest CIM datetime");
    _usec = usec;
    _interval = isInterval;
}

void CIMDateTime::clear() { *this = CIMDateTime(); }

void CIMDateTime::set(const String& str) {
    if (str.size() != 25 || str[14] != '.') throw InvalidDateTimeFormatException();
    const Uint16 sign = str[21];
    const bool interval = sign == ':';
    if (!interval && sign != '+' && sign != '-') throw InvalidDateTimeFormatException();

    // Wildcards: a run of '*' at the right end of the value digits. Outside
    // the microseconds a wildcard covers whole fields only.
    Uint32 wildcards = 0;
    while (wildcards < 20 && str[Uint32(digitPosition(wildcards))] == '*') ++wildcards;
    static const Uint32 fieldEdgesTs[] = {0, 6, 8, 10, 12, 14, 16, 20};
    static const Uint32 fieldEdgesIv[] = {0, 6, 8, 10, 12, 20};
    if (wildcards > 6) {
        bool edge = false;
        const Uint32* edges = interval ? fieldEdgesIv : fieldEdgesTs;
        const size_t count = interval ? 6 : 8;
        for (size_t i = 0; i < count; ++i) edge = edge || edges[i] == wildcards;
        if (!edge) throw InvalidDateTimeFormatException();
    }
    // The text with wildcards read as the smallest legal digits.
    String text(str);
    for (Uint32 k = 0; k < wildcards; ++k) {
        const Uint32 pos = Uint32(digitPosition(k));
        // month and day (positions 4..7) of a timestamp cannot be zero
        text[pos] = (!interval && (pos == 5 || pos == 7)) ? Char16('1') : Char16('0');
    }

    bool ok = true;
    Uint64 usec = 0;
    Sint32 offset = 0;
    if (interval) {
        const Uint64 days = parseDigits(text, 0, 8, ok);
        const Uint64 hours = parseDigits(text, 8, 2, ok);
        const Uint64 minutes = parseDigits(text, 10, 2, ok);
        const Uint64 seconds = parseDigits(text, 12, 2, ok);
        const Uint64 micro = parseDigits(text, 15, 6, ok);
        if (!ok || hours > 23 || minutes > 59 || seconds > 59 || text[22] != '0' ||
            text[23] != '0' || text[24] != '0')
            throw InvalidDateTimeFormatException();
        usec = days * kDay + hours * kHour + minutes * kMinute + seconds * kSecond + micro;
    } else {
        const Uint64 year = parseDigits(text, 0, 4, ok);
        const Uint64 month = parseDigits(text, 4, 2, ok);
        const Uint64 day = parseDigits(text, 6, 2, ok);
        const Uint64 hours = parseDigits(text, 8, 2, ok);
        const Uint64 minutes = parseDigits(text, 10, 2, ok);
        const Uint64 seconds = parseDigits(text, 12, 2, ok);
        const Uint64 micro = parseDigits(text, 15, 6, ok);
        const Uint64 utc = parseDigits(text, 22, 3, ok);
        if (!ok || month < 1 || month > 12 || day < 1 || day > daysInMonth(Sint64(year), unsigned(month)) ||
            hours > 23 || minutes > 59 || seconds > 59 || utc > 999)
            throw InvalidDateTimeFormatException();
        usec = Uint64(daysFromCivil(Sint64(year), unsigned(month), unsigned(day))) * kDay +
               hours * kHour + minutes * kMinute + seconds * kSecond + micro;
        offset = Sint32(utc) * (sign == '-' ? -1 : 1);
    }
    _usec = usec;
    _utcOffset = offset;
    _wildcards = wildcards;
    _interval = interval;
}

String CIMDateTime::toString() const {
    char buffer[64];
    if (_interval) {
        const Uint64 days = _usec / kDay;
        Uint64 rest = _usec % kDay;
        std::snprintf(buffer, sizeof buffer, "%08llu%02llu%02llu%02llu.%06llu:000", days,
                      rest / kHour, rest % kHour / kMinute, rest % kMinute / kSecond,
                      rest % kSecond);
    } else {
        Sint64 year;
        unsigned month, day;
        civilFromDays(Sint64(_usec / kDay), year, month, day);
        const Uint64 rest = _usec % kDay;
        const Sint32 offset = _utcOffset < 0 ? -_utcOffset : _utcOffset;
        std::snprintf(buffer, sizeof buffer, "%04lld%02u%02u%02llu%02llu%02llu.%06llu%c%03d",
                      year, month, day, rest / kHour, rest % kHour / kMinute,
                      rest % kMinute / kSecond, rest % kSecond, _utcOffset < 0 ? '-' : '+',
                      offset);
    }
    for (Uint32 k = 0; k < _wildcards; ++k) buffer[digitPosition(k)] = '*';
    return String(buffer);
}

CIMDateTime CIMDateTime::getCurrentDateTime() {
    struct timeval tv;
    ::gettimeofday(&tv, nullptr);
    struct tm local;
    time_t seconds = tv.tv_sec;
    ::localtime_r(&seconds, &local);
    const Sint32 offsetMinutes = Sint32(local.tm_gmtoff / 60);
    CIMDateTime now;
    now._interval = false;
    now._utcOffset = offsetMinutes;
    now._usec = kUnixEpoch + Uint64(tv.tv_sec) * kSecond + Uint64(tv.tv_usec) +
                Uint64(Sint64(offsetMinutes) * Sint64(kMinute));
    return now;
}

Uint64 CIMDateTime::toMicroSeconds() const {
    if (_interval) return _usec;
    const Sint64 utc = Sint64(_usec) - Sint64(_utcOffset) * Sint64(kMinute);
    return utc < 0 ? 0 : Uint64(utc);
}

Sint64 CIMDateTime::getDifference(CIMDateTime startTime, CIMDateTime finishTime) {
    if (startTime._interval != finishTime._interval)
        throw TypeMismatchException("difference of a timestamp and an interval");
    startTime._checkNoWildcards("difference");
    finishTime._checkNoWildcards("difference");
    return Sint64(finishTime.toMicroSeconds()) - Sint64(startTime.toMicroSeconds());
}

void CIMDateTime::_checkNoWildcards(const char* what) const {
    if (_wildcards)
        throw TypeMismatchException(String(what) + " of a datetime with wildcards");
}

Boolean CIMDateTime::equal(const CIMDateTime& x) const {
    if (_interval != x._interval) return false;
    const Uint32 wildcards = _wildcards > x._wildcards ? _wildcards : x._wildcards;
    const Uint64 unit = granularity(wildcards, _interval);
    if (unit == 0) return true;
    return toMicroSeconds() / unit == x.toMicroSeconds() / unit;
}

CIMDateTime CIMDateTime::operator+(const CIMDateTime& x) const {
    CIMDateTime result(*this);
    result += x;
    return result;
}

CIMDateTime& CIMDateTime::operator+=(const CIMDateTime& x) {
    if (!x._interval) throw TypeMismatchException("only an interval can be added");
    _checkNoWildcards("sum");
    x._checkNoWildcards("sum");
    const Uint64 sum = _usec + x._usec;
    if (sum >= (_interval ? kIntervalLimit : kTimeStampLimit))
        throw DateTimeOutOfRangeException("sum beyond the largest CIM datetime");
    _usec = sum;
    return *this;
}

CIMDateTime CIMDateTime::operator-(const CIMDateTime& x) const {
    _checkNoWildcards("difference");
    x._checkNoWildcards("difference");
    if (_interval && !x._interval) throw TypeMismatchException("a timestamp subtracted from an interval");
    if (!_interval && !x._interval) {
        const Uint64 a = toMicroSeconds(), b = x.toMicroSeconds();
        if (b > a) throw DateTimeOutOfRangeException("negative difference of timestamps");
        return CIMDateTime(a - b, true);
    }
    CIMDateTime result(*this);
    if (x._usec > _usec) throw DateTimeOutOfRangeException("negative datetime");
    result._usec = _usec - x._usec;
    return result;
}

CIMDateTime& CIMDateTime::operator-=(const CIMDateTime& x) {
    if (!x._interval) throw TypeMismatchException("only an interval can be subtracted in place");
    *this = *this - x;
    return *this;
}

CIMDateTime CIMDateTime::operator*(Uint64 num) const {
    CIMDateTime result(*this);
    result *= num;
    return result;
}

CIMDateTime& CIMDateTime::operator*=(Uint64 num) {
    if (!_interval) throw TypeMismatchException("only an interval can be multiplied");
    _checkNoWildcards("product");
    if (num != 0 && _usec > (kIntervalLimit - 1) / num)
        throw DateTimeOutOfRangeException("product beyond the largest CIM interval");
    _usec *= num;
    return *this;
}

CIMDateTime CIMDateTime::operator/(Uint64 num) const {
    CIMDateTime result(*this);
    result /= num;
    return result;
}

CIMDateTime& CIMDateTime::operator/=(Uint64 num) {
    if (!_interval) throw TypeMismatchException("only an interval can be divided");
    _checkNoWildcards("quotient");
    if (num == 0) throw DateTimeOutOfRangeException("division by zero");
    _usec /= num;
    return *this;
}

Uint64 CIMDateTime::operator/(const CIMDateTime& x) const {
    if (!_interval || !x._interval) throw TypeMismatchException("only intervals divide each other");
    _checkNoWildcards("quotient");
    x._checkNoWildcards("quotient");
    if (x._usec == 0) throw DateTimeOutOfRangeException("division by a zero interval");
    return _usec / x._usec;
}

Boolean CIMDateTime::operator<(const CIMDateTime& x) const {
    if (_interval != x._interval) throw TypeMismatchException("comparison of a timestamp and an interval");
    const Uint32 wildcards = _wildcards > x._wildcards ? _wildcards : x._wildcards;
    const Uint64 unit = granularity(wildcards, _interval);
    if (unit == 0) return false;
    return toMicroSeconds() / unit < x.toMicroSeconds() / unit;
}
Boolean CIMDateTime::operator<=(const CIMDateTime& x) const { return *this < x || equal(x); }
Boolean CIMDateTime::operator>(const CIMDateTime& x) const { return x < *this; }
Boolean CIMDateTime::operator>=(const CIMDateTime& x) const { return x < *this || equal(x); }
Boolean CIMDateTime::operator!=(const CIMDateTime& x) const { return !equal(x); }

Boolean operator==(const CIMDateTime& x, const CIMDateTime& y) { return x.equal(y); }

#ifdef PEGASUS_USE_EXPERIMENTAL_INTERFACES
CIMDateTime::CIMDateTime(Uint32 year, Uint32 month, Uint32 day, Uint32 hours, Uint32 minutes,
                         Uint32 seconds, Uint32 microseconds,
                         Uint32 numSignificantMicrosecondDigits, Sint32 utcOffset) {
    setTimeStamp(year, month, day, hours, minutes, seconds, microseconds,
                 numSignificantMicrosecondDigits, utcOffset);
}
CIMDateTime::CIMDateTime(Uint32 days, Uint32 hours, Uint32 minutes, Uint32 seconds,
                         Uint32 microseconds, Uint32 numSignificantMicrosecondDigits) {
    setInterval(days, hours, minutes, seconds, microseconds, numSignificantMicrosecondDigits);
}
void CIMDateTime::setTimeStamp(Uint32 year, Uint32 month, Uint32 day, Uint32 hours,
                               Uint32 minutes, Uint32 seconds, Uint32 microseconds,
                               Uint32 numSignificantMicrosecondDigits, Sint32 utcOffset) {
    if (numSignificantMicrosecondDigits > 6 || utcOffset > 999 || utcOffset < -999)
        throw DateTimeOutOfRangeException("timestamp fields");
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%04u%02u%02u%02u%02u%02u.%06u%c%03d", year, month, day,
                  hours, minutes, seconds, microseconds, utcOffset < 0 ? '-' : '+',
                  utcOffset < 0 ? -utcOffset : utcOffset);
    for (Uint32 i = numSignificantMicrosecondDigits; i < 6; ++i) buffer[15 + i] = '*';
    try {
        set(String(buffer));
    } catch (const InvalidDateTimeFormatException&) {
        throw DateTimeOutOfRangeException("timestamp fields");
    }
}
void CIMDateTime::setInterval(Uint32 days, Uint32 hours, Uint32 minutes, Uint32 seconds,
                              Uint32 microseconds, Uint32 numSignificantMicrosecondDigits) {
    if (numSignificantMicrosecondDigits > 6) throw DateTimeOutOfRangeException("interval fields");
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%08u%02u%02u%02u.%06u:000", days, hours, minutes,
                  seconds, microseconds);
    for (Uint32 i = numSignificantMicrosecondDigits; i < 6; ++i) buffer[15 + i] = '*';
    try {
        set(String(buffer));
    } catch (const InvalidDateTimeFormatException&) {
        throw DateTimeOutOfRangeException("interval fields");
    }
}
#endif

PEGASUS_NAMESPACE_END
