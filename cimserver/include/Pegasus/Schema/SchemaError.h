#ifndef Pegasus_Schema_SchemaError_h
#define Pegasus_Schema_SchemaError_h

#include <stdexcept>
#include <string>

namespace Pegasus {

// Every failure while reading MOF or building the class registry: a syntax
// error, a missing superclass, a redefined class, an include cycle, a literal
// that does not fit its property. what() reads "file:line: message" so that an
// operator can go straight to the offending line; file() and line() give the
// parts (line 0 when the failure concerns a whole file, e.g. it cannot be
// opened).
class SchemaError : public std::runtime_error
{
public:
    SchemaError(const std::string& file, unsigned line, const std::string& message);

    const std::string& file() const { return _file; }
    unsigned line() const { return _line; }
    const std::string& message() const { return _message; }

private:
    std::string _file;
    unsigned _line;
    std::string _message;
};

} // namespace Pegasus

#endif
