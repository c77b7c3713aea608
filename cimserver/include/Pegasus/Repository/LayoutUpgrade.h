#ifndef Pegasus_Repository_LayoutUpgrade_h
#define Pegasus_Repository_LayoutUpgrade_h

namespace Pegasus {

class NameDictionary;
class RepositoryConnection;

// Converts a namespace database of the first layout (text key paths,
// instances as UTF-16 with every name spelled out, text reference rows) to
// the present one, in one transaction: every instance is decoded and encoded
// again under the same row id, every reference row is filed under the hash
// of its target, and the file is compacted afterwards. Nothing is lost: an
// instance that cannot be decoded stops the conversion, the file stays as it
// was, and the error (SqliteError) names the file, the instance and what to
// do.
class LayoutUpgrade {
public:
    // connection: the writer, on a file whose firstLayout() is true.
    // names: the (empty) dictionary of that namespace, filled as it goes.
    static void fromFirstLayout(RepositoryConnection& connection, NameDictionary& names);
};

} // namespace Pegasus

#endif
