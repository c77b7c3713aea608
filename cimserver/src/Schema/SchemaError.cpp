#include <Pegasus/Schema/SchemaError.h>

namespace Pegasus {

namespace {

std::string formatWhat(const std::string& file, unsigned line, const std::string& message)
{
    std::string what = file.empty() ? std::string("<mof>") : file;
    if (line > 0)
        what += ":" + std::to_string(line);
    what += ": ";
    what += message;
    return what;
}

} // namespace

SchemaError::SchemaError(const std::string& file, unsigned line, const std::string& message)
    : std::runtime_error(formatWhat(file, line, message)),
      _file(file),
      _line(line),
      _message(message)
{
}

} // namespace Pegasus
