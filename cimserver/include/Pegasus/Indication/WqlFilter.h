#ifndef Pegasus_Indication_WqlFilter_h
#define Pegasus_Indication_WqlFilter_h

#include <Pegasus/Common/CIMInstance.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace Pegasus {

// A query that does not parse: where (0-based character offset into the
// query text) and what the parser expected there.
class WqlParseError : public std::runtime_error {
public:
    WqlParseError(std::size_t position, const std::string& expected, const std::string& found);
    std::size_t position() const { return _position; }
    const std::string& expected() const { return _expected; }

private:
    std::size_t _position;
    std::string _expected;
};

// The query of an indication filter:
//   SELECT * | prop[, prop...] FROM <class> [WHERE <condition>]
// where a condition combines, with AND, OR, NOT and parentheses,
//   <operand> (= | <> | != | < | <= | > | >=) <operand>
//   <operand> IS [NOT] NULL
//   <property path> ISA <class>
// and an operand is a property of the indication (Name), a property of an
// embedded instance (SourceInstance.Name), or a literal: 'text' or "text",
// an integer, a real, TRUE, FALSE or NULL. Keywords and names are
// case-insensitive. "WQL", "DMTF:CQL" and "CIM:CQL" all name this subset.
//
// Evaluation uses three-valued logic: a comparison with NULL, a missing
// property or values of incompatible types is unknown, and an indication
// passes only when the whole condition is true.
class WqlFilter {
public:
    // Is `className` the class `baseClass` or one of its subclasses?
    using IsaFunction = std::function<bool(const std::string& className, const std::string& baseClass)>;

    // Throws WqlParseError.
    static WqlFilter parse(const std::string& query);
    static bool isSupportedLanguage(const std::string& queryLanguage);

    WqlFilter(const WqlFilter&) = default;
    WqlFilter& operator=(const WqlFilter&) = default;
    ~WqlFilter();

    const std::string& query() const { return _query; }
    const std::string& fromClass() const { return _fromClass; }
    bool selectsAll() const { return _selectList.empty(); }
    const std::vector<std::string>& selectList() const { return _selectList; }
    bool hasCondition() const { return static_cast<bool>(_condition); }
    // The text after WHERE ("" without one).
    const std::string& conditionText() const { return _conditionText; }

    // Names of the indication's own properties the query uses (SELECT list
    // and the first element of every property path in WHERE), without
    // duplicates, as written.
    std::vector<std::string> referencedProperties() const;

    // True when `indication` satisfies the WHERE condition (always true
    // without one). The FROM class is the caller's concern. `isa` decides
    // ISA; without it ISA compares class names only.
    bool evaluate(const CIMInstance& indication, const IsaFunction& isa = IsaFunction()) const;

    // A copy of `indication` holding only the selected properties (the
    // whole indication for SELECT *).
    CIMInstance project(const CIMInstance& indication) const;

    struct Node;

private:
    WqlFilter() = default;
    std::string _query;
    std::string _fromClass;
    std::vector<std::string> _selectList;
    std::string _conditionText;
    std::shared_ptr<const Node> _condition;
    friend class WqlParser;
};

} // namespace Pegasus

#endif
