#include <Pegasus/Schema/SchemaManager.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <sys/stat.h>

#include <Pegasus/Schema/CaseInsensitive.h>
#include <Pegasus/Schema/MofHandler.h>
#include <Pegasus/Schema/MofParser.h>
#include <Pegasus/Schema/SchemaError.h>

namespace Pegasus {

struct SchemaManager::Space
{
    explicit Space(const std::string& n) : name(n), registry(n) {}

    std::string name;
    ClassRegistry registry;
    std::vector<InstanceDecl> instances;
};

// Puts each declaration the parser reads into the namespace in effect.
class SchemaManager::Loader : public MofHandler
{
public:
    explicit Loader(SchemaManager& manager) : _manager(manager) {}

    void classDeclared(ClassDecl& cls) override
    {
        if (cls.namespaceName.empty())
            throw SchemaError(cls.file, cls.line,
                              "class " + cls.name + " declared before any #pragma namespace");
        _manager.addNamespace(cls.namespaceName).addClass(std::move(cls));
    }

    void instanceDeclared(InstanceDecl& inst) override
    {
        if (inst.namespaceName.empty())
            throw SchemaError(inst.file, inst.line,
                              "instance of " + inst.className + " declared before any #pragma namespace");
        _manager.addNamespace(inst.namespaceName);
        Space* space = _manager._space(inst.namespaceName);
        if (!space->registry.findClass(inst.className))
            throw SchemaError(inst.file, inst.line,
                              "instance of undefined class " + inst.className + " in namespace " +
                                  space->name);
        space->instances.push_back(std::move(inst));
    }

private:
    SchemaManager& _manager;
};

SchemaManager::SchemaManager()
{
}

SchemaManager::~SchemaManager()
{
}

SchemaManager::Space* SchemaManager::_space(const std::string& ns) const
{
    for (const std::unique_ptr<Space>& s : _spaces)
    {
        if (CaseInsensitive::equal(s->name, ns))
            return s.get();
    }
    return nullptr;
}

ClassRegistry& SchemaManager::addNamespace(const std::string& ns)
{
    if (Space* s = _space(ns))
        return s->registry;
    _spaces.emplace_back(new Space(ns));
    return _spaces.back()->registry;
}

const ClassRegistry* SchemaManager::registry(const std::string& ns) const
{
    Space* s = _space(ns);
    return s ? &s->registry : nullptr;
}

std::vector<std::string> SchemaManager::namespaces() const
{
    std::vector<std::string> names;
    for (const std::unique_ptr<Space>& s : _spaces)
        names.push_back(s->name);
    return names;
}

const ClassDecl* SchemaManager::findClass(const std::string& ns, const std::string& className) const
{
    Space* s = _space(ns);
    return s ? s->registry.findClass(className) : nullptr;
}

const std::vector<InstanceDecl>& SchemaManager::instances(const std::string& ns) const
{
    static const std::vector<InstanceDecl> none;
    Space* s = _space(ns);
    return s ? s->instances : none;
}

void SchemaManager::_load(const std::string* text, const std::string& name,
                          const std::string& defaultNamespace, const std::string& baseDir)
{
    Loader loader(*this);
    MofParser parser(loader);
    parser.setInitialNamespace(defaultNamespace);
    if (text)
        parser.parseString(*text, name, baseDir);
    else
        parser.parseFile(name);
}

void SchemaManager::loadFile(const std::string& path, const std::string& defaultNamespace)
{
    _load(nullptr, path, defaultNamespace, std::string());
}

void SchemaManager::loadString(const std::string& text, const std::string& sourceName,
                               const std::string& defaultNamespace, const std::string& baseDir)
{
    _load(&text, sourceName, defaultNamespace, baseDir);
}

void SchemaManager::loadDirectory(const std::string& dir)
{
    DIR* d = ::opendir(dir.c_str());
    if (!d)
        throw SchemaError(dir, 0, std::string("cannot read schema folder: ") + std::strerror(errno));
    std::vector<std::string> files;
    while (struct dirent* entry = ::readdir(d))
    {
        std::string name = entry->d_name;
        if (name.size() <= 4 || name.compare(name.size() - 4, 4, ".mof") != 0)
            continue;
        std::string path = dir + (dir.empty() || dir.back() == '/' ? "" : "/") + name;
        struct stat st;
        if (::stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode))
            files.push_back(path);
    }
    ::closedir(d);
    if (files.empty())
        throw SchemaError(dir, 0, "schema folder holds no *.mof file");
    std::sort(files.begin(), files.end());
    for (const std::string& path : files)
        loadFile(path);
}

} // namespace Pegasus
