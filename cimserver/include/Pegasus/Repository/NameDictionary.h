#ifndef Pegasus_Repository_NameDictionary_h
#define Pegasus_Repository_NameDictionary_h

#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/String.h>

#include <cstdint>
#include <deque>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <unordered_map>
#include <vector>

namespace Pegasus {

class RepositoryConnection;

// The names one namespace database shares between its stored instances:
// class, property and key names, namespaces, class origins and reference
// classes, and each property's shape (name, class origin, reference class,
// propagated flag, array size). An encoded instance names them by number, so
// the text of a name is kept once per database instead of once per instance.
//
// Numbers start at 1 (0 stands for "no name") and are never given twice in
// one process, also not after a rollback: a number once handed out keeps its
// entry. New entries are pending until a write stores them (storePending) in
// the same transaction as the instances using them; a rollback of any write
// makes every entry pending again, so that nothing a later commit relies on
// can have been rolled back.
//
// Thread-safe. Lookups for encoding take the lock per call; a decode holds a
// Reader for its whole length.
class NameDictionary {
public:
    struct PropertyShape {
        CIMName name;
        CIMName origin;
        CIMName referenceClass;
        bool propagated = false;
        Uint32 arraySize = 0;
    };

    NameDictionary() = default;
    NameDictionary(const NameDictionary&) = delete;
    NameDictionary& operator=(const NameDictionary&) = delete;

    // Number of a name, or of a property's shape; a new one when unknown.
    Uint32 nameId(const String& name);
    Uint32 propertyId(const CIMConstProperty& property);
    // Number of a name that is already known, 0 otherwise (nothing is added).
    Uint32 knownNameId(const String& name) const;
    // The text of a name's number; unknown numbers are damage
    // (CIMException(CIM_ERR_FAILED)).
    String textOf(Uint32 id) const;

    // Holds the dictionary for reading; entries do not move meanwhile.
    // Unknown numbers are damage: CIMException(CIM_ERR_FAILED).
    class Reader {
    public:
        explicit Reader(const NameDictionary& dictionary)
            : _d(dictionary), _lock(dictionary._mutex) {}
        // 0 gives the null name.
        const CIMName& name(Uint32 id) const;
        const String& text(Uint32 id) const;
        const PropertyShape& property(Uint32 id) const;

    private:
        const NameDictionary& _d;
        std::shared_lock<std::shared_mutex> _lock;
    };

    // Reads every entry of the database (at open). A damaged entry is an
    // SqliteError naming the file.
    void load(RepositoryConnection& connection);
    // Writes the pending entries through a connection inside its write
    // transaction. An entry of the same number with another content (the
    // database written by another process) is an SqliteError.
    void storePending(RepositoryConnection& connection);
    // A write was (or is about to be) rolled back: every entry is pending again.
    void rolledBack();

    size_t size() const;

    // The stored form of an entry, and back (false when damaged).
    static std::string encodeName(const String& name);
    static std::string encodeProperty(Uint32 nameId, Uint32 originId, Uint32 referenceClassId,
        bool propagated, Uint32 arraySize);

private:
    struct Entry {
        bool isProperty = false;
        String text;            // a name
        CIMName name;           // the name as a CIMName, when it is a valid one
        PropertyShape shape;    // a property shape
        std::string stored;     // the stored form
    };
    Uint32 add(Entry entry, const std::u16string& key, bool isProperty);
    bool parse(Uint32 id, const std::string& stored, Entry& entry) const;
    const Entry& entry(Uint32 id) const;

    mutable std::shared_mutex _mutex;
    std::deque<Entry> _entries;   // index id - 1
    std::unordered_map<std::u16string, Uint32> _names;
    std::unordered_map<std::u16string, Uint32> _properties;
    std::vector<Uint32> _pending;
    std::mutex _storeMutex;
};

} // namespace Pegasus

#endif
