#ifndef Pegasus_Config_h
#define Pegasus_Config_h

// Build and platform settings every provider source relies on. Only the
// Linux x86-64 GNU platform is supported.

#include <cstddef>

#ifndef PEGASUS_PLATFORM_LINUX_X86_64_GNU
# define PEGASUS_PLATFORM_LINUX_X86_64_GNU
#endif

#define PEGASUS_OS_LINUX
#define PEGASUS_OS_TYPE_UNIX
#define PEGASUS_PLATFORM_LINUX_GENERIC_GNU
#define PEGASUS_HAVE_NAMESPACES

#define PEGASUS_EXPORT __attribute__((visibility("default")))
#define PEGASUS_IMPORT
#define PEGASUS_COMMON_LINKAGE PEGASUS_EXPORT
#define PEGASUS_PROVIDER_LINKAGE PEGASUS_EXPORT
#define PEGASUS_CLIENT_LINKAGE PEGASUS_EXPORT

#define PEGASUS_NAMESPACE_BEGIN namespace Pegasus {
#define PEGASUS_NAMESPACE_END }
#define PEGASUS_USING_PEGASUS using namespace Pegasus
#define PEGASUS_USING_STD using namespace std
#define PEGASUS_STD(X) std::X

#define PEGASUS_UINT64_LITERAL(X) (X##ULL)
#define PEGASUS_SINT64_LITERAL(X) (X##LL)
#define PEGASUS_64BIT_CONVERSION_WIDTH "ll"

#define PEGASUS_ARRAY_T(T) Array<T>

namespace Pegasus {

typedef bool Boolean;
typedef unsigned char Uint8;
typedef signed char Sint8;
typedef unsigned short Uint16;
typedef signed short Sint16;
typedef unsigned int Uint32;
typedef signed int Sint32;
typedef unsigned long long Uint64;
typedef signed long long Sint64;
typedef float Real32;
typedef double Real64;

static const Uint32 PEG_NOT_FOUND = Uint32(-1);

}  // namespace Pegasus

#endif
