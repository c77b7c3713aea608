#ifndef Pegasus_Schema_SchemaManager_h
#define Pegasus_Schema_SchemaManager_h

#include <memory>
#include <string>
#include <vector>

#include <Pegasus/Schema/ClassRegistry.h>
#include <Pegasus/Schema/InstanceDecl.h>

namespace Pegasus {

// The server's schema: one ClassRegistry per namespace, and the instance
// declarations found in the MOF per namespace in file order (the provider
// registration, for instance). Loaded once at start; afterwards read-only
// and safe for concurrent readers. A load that throws leaves the manager
// partly filled: the server does not start on a broken schema, so it is
// discarded. Namespace names compare ignoring case and are reported as first
// spelled.
class SchemaManager
{
public:
    SchemaManager();
    ~SchemaManager();

    SchemaManager(const SchemaManager&) = delete;
    SchemaManager& operator=(const SchemaManager&) = delete;

    // Reads every "*.mof" file directly in `dir` (not in subfolders), in
    // byte order of the file name. Each such entry file starts without a
    // namespace and must set one with #pragma namespace before its first
    // declaration; the namespace lasts to the end of that file, across its
    // includes. Throws SchemaError (file and line) on any fault, including a
    // missing or unreadable folder.
    void loadDirectory(const std::string& dir);

    // Reads one entry file. Declarations before any namespace pragma go to
    // `defaultNamespace`, or are an error when it is empty.
    void loadFile(const std::string& path, const std::string& defaultNamespace = std::string());

    // As loadFile, for MOF text in memory (used by tests and tools).
    void loadString(const std::string& text, const std::string& sourceName,
                    const std::string& defaultNamespace = std::string(),
                    const std::string& baseDir = ".");

    // Creates an empty namespace if it does not exist; returns its registry.
    ClassRegistry& addNamespace(const std::string& ns);

    bool hasNamespace(const std::string& ns) const { return registry(ns) != nullptr; }

    // Null for an unknown namespace.
    const ClassRegistry* registry(const std::string& ns) const;

    // Namespaces in order of first appearance.
    std::vector<std::string> namespaces() const;

    // Shortcut: null when the namespace or the class is unknown.
    const ClassDecl* findClass(const std::string& ns, const std::string& className) const;

    // Instance declarations of a namespace in file order; empty when none.
    const std::vector<InstanceDecl>& instances(const std::string& ns) const;

private:
    struct Space;
    class Loader;

    Space* _space(const std::string& ns) const;
    void _load(const std::string* text, const std::string& name,
               const std::string& defaultNamespace, const std::string& baseDir);

    std::vector<std::unique_ptr<Space>> _spaces;
};

} // namespace Pegasus

#endif
