#ifndef Pegasus_CIMDateTime_h
#define Pegasus_CIMDateTime_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

// A CIM datetime: either a timestamp "yyyymmddhhmmss.mmmmmmsutc" (s is '+'
// or '-', utc the offset from UTC in minutes) or an interval
// "ddddddddhhmmss.mmmmmm:000". Timestamps count microseconds from 1 January
// of year 0; trailing fields may be '*' (wildcards). Value semantics.
class PEGASUS_COMMON_LINKAGE CIMDateTime {
public:
    static const Uint32 WILDCARD;

    CIMDateTime();
    CIMDateTime(const String& str);
    CIMDateTime(const CIMDateTime& x) = default;
    CIMDateTime(Uint64 usec, Boolean isInterval);
#ifdef PEGASUS_USE_EXPERIMENTAL_INTERFACES
    CIMDateTime(Uint32 year, Uint32 month, Uint32 day, Uint32 hours, Uint32 minutes,
                Uint32 seconds, Uint32 microseconds, Uint32 numSignificantMicrosecondDigits,
                Sint32 utcOffset);
    CIMDateTime(Uint32 days, Uint32 hours, Uint32 minutes, Uint32 seconds,
                Uint32 microseconds, Uint32 numSignificantMicrosecondDigits);
    void setTimeStamp(Uint32 year, Uint32 month, Uint32 day, Uint32 hours, Uint32 minutes,
                      Uint32 seconds, Uint32 microseconds, Uint32 numSignificantMicrosecondDigits,
                      Sint32 utcOffset);
    void setInterval(Uint32 days, Uint32 hours, Uint32 minutes, Uint32 seconds,
                     Uint32 microseconds, Uint32 numSignificantMicrosecondDigits);
    Boolean isTimeStamp() const { return !_interval; }
#endif
    ~CIMDateTime() = default;

    CIMDateTime& operator=(const CIMDateTime& x) = default;

    String toString() const;
    void set(const String& str);
    void clear();

    static CIMDateTime getCurrentDateTime();
    static Sint64 getDifference(CIMDateTime startTime, CIMDateTime finishTime);

    Boolean isInterval() { return _interval; }
    Boolean isInterval() const { return _interval; }
    Boolean equal(const CIMDateTime& x) const;

    // Microseconds: the length of an interval, or for a timestamp the time
    // since 1 January of year 0 in UTC.
    Uint64 toMicroSeconds() const;

    CIMDateTime operator+(const CIMDateTime& x) const;
    CIMDateTime& operator+=(const CIMDateTime& x);
    CIMDateTime operator-(const CIMDateTime& x) const;
    CIMDateTime& operator-=(const CIMDateTime& x);
    CIMDateTime operator*(Uint64 num) const;
    CIMDateTime& operator*=(Uint64 num);
    CIMDateTime operator/(Uint64 num) const;
    CIMDateTime& operator/=(Uint64 num);
    Uint64 operator/(const CIMDateTime& x) const;

    Boolean operator<(const CIMDateTime& x) const;
    Boolean operator<=(const CIMDateTime& x) const;
    Boolean operator>(const CIMDateTime& x) const;
    Boolean operator>=(const CIMDateTime& x) const;
    Boolean operator!=(const CIMDateTime& x) const;

private:
    void _checkNoWildcards(const char* what) const;
    Uint64 _usec = 0;          // local value (timestamps) or length (intervals)
    Sint32 _utcOffset = 0;     // minutes east of UTC
    Uint32 _wildcards = 0;     // number of trailing '*' characters in the text form
    Boolean _interval = true;
};

PEGASUS_COMMON_LINKAGE Boolean operator==(const CIMDateTime& x, const CIMDateTime& y);

PEGASUS_NAMESPACE_END

#endif
