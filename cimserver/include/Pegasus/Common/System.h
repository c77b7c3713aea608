#ifndef Pegasus_System_h
#define Pegasus_System_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

// Operating system services for providers and the server.
class PEGASUS_COMMON_LINKAGE System {
public:
    static const String CIMSERVER;

    static void getCurrentTime(Uint32& seconds, Uint32& milliseconds);
    static void getCurrentTimeUsec(Uint32& seconds, Uint32& microseconds);
    static Uint64 getCurrentTimeUsec();
    // Local time as "MM/DD/YYYY-HH:MM:SS".
    static String getCurrentASCIITime();
    static void sleep(Uint32 seconds);

    static Boolean exists(const char* path);
    static Boolean canRead(const char* path);
    static Boolean canWrite(const char* path);
    static Boolean isDirectory(const char* path);
    static Boolean makeDirectory(const char* path);
    static Boolean removeDirectory(const char* path);
    static Boolean removeFile(const char* path);
    static Boolean renameFile(const char* oldPath, const char* newPath);
    static Boolean copyFile(const char* fromPath, const char* toPath);
    static Boolean getFileSize(const char* path, Uint32& size);
    static String getCurrentDirectory();

    // gethostname()'s answer (cached), unless the server set an override.
    static String getHostName();
    static String getFullyQualifiedHostName();
    static String getSystemCreationClassName();
    static Uint32 lookupPort(const char* serviceName, Uint32 defaultPort);
    static Boolean isLocalHost(const String& hostName);
    static String getEffectiveUserName();
    static Uint32 getPID();
    static Sint32 strcasecmp(const char* s1, const char* s2);

    // Server side: the "hostname" and "fullyQualifiedHostName" settings
    // (an empty text restores the system's own names).
    static void setHostName(const String& hostName);
    static void setFullyQualifiedHostName(const String& hostName);
};

PEGASUS_NAMESPACE_END

#endif
