#ifndef Pegasus_Schema_MofParser_h
#define Pegasus_Schema_MofParser_h

#include <string>
#include <vector>

#include <Pegasus/Schema/MofHandler.h>

namespace Pegasus {

// Reads the MOF that CIM schemas are written in: class declarations with
// qualifiers, properties, references, methods and parameters; instance
// declarations; qualifier type declarations (checked for syntax, then
// skipped); and the pragmas include, namespace (others are accepted and
// ignored). Included files are read in place, relative to the folder of the
// including file; an include cycle is an error. A namespace pragma stays in
// effect to the end of the parse, across includes.
//
// Every error throws SchemaError naming the file and line and what was
// expected, e.g. "x.mof:12: expected ';' after property declaration, found
// 'string'". Nothing is silently skipped.
class MofParser
{
public:
    explicit MofParser(MofHandler& handler);

    // The namespace declarations start in (default: none).
    void setInitialNamespace(const std::string& ns) { _namespace = ns; }

    // The namespace in effect at the end of the last parse.
    const std::string& currentNamespace() const { return _namespace; }

    void parseFile(const std::string& path);

    // `sourceName` names the text in messages; includes are resolved
    // relative to `baseDir`.
    void parseString(const std::string& text, const std::string& sourceName,
                     const std::string& baseDir = ".");

    // Include depth beyond which a parse is refused even without a cycle.
    static const unsigned MAX_INCLUDE_DEPTH = 32;

private:
    friend class MofParserImpl;

    MofHandler& _handler;
    std::string _namespace;
    std::vector<std::string> _includeStack; // canonical paths being read
};

} // namespace Pegasus

#endif
