#ifndef Pegasus_Repository_NamespaceStore_h
#define Pegasus_Repository_NamespaceStore_h

#include <Pegasus/Repository/NameDictionary.h>
#include <Pegasus/Repository/Repository.h>
#include <Pegasus/Repository/RepositoryConnection.h>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace Pegasus {

// One namespace's database and its connections:
//  - the writer: holds the open transaction (beginTransaction) and serves
//    every Joined call on this namespace, one at a time (writer mutex);
//  - the client writer: Committed writes, each in its own immediate
//    transaction, which waits (busy timeout) while the writer's transaction
//    is open;
//  - a pool of read-only connections for Committed reads (and Joined reads
//    while no transaction is open), each read in one WAL snapshot, so they
//    see committed data only and are never blocked by the writer;
//  - a checkpoint thread: commits do not copy the WAL back into the database
//    file themselves; after each commit this thread does it (passive
//    checkpoint, which never blocks readers or the writer), then, when no
//    reader holds an old snapshot, cuts the WAL file back to nothing, so that
//    a large load does not leave a large WAL behind;
//  - the database's NameDictionary, loaded at open; an open of a database of
//    the first layout converts it first (LayoutUpgrade).
class NamespaceStore {
public:
    NamespaceStore(const std::string& nameSpace, const std::string& file);
    ~NamespaceStore();

    const std::string& nameSpace() const { return _nameSpace; } // as the schema spells it
    const std::string& file() const { return _file; }
    NameDictionary& names() { return _names; }
    const NameDictionary& names() const { return _names; }

    void beginTransaction();
    void commitTransaction();
    void rollBackTransaction();

    // A connection for one repository call. A write session makes its changes
    // atomic: they count only when commit() is called before it ends (inside
    // the open transaction a savepoint, otherwise an immediate transaction).
    class Session {
    public:
        // selfUndoing: the caller undoes its own changes on failure
        // (a create deletes its row again), so inside the open transaction no
        // savepoint is needed; a data load creates many instances.
        Session(NamespaceStore& store, RepositoryAccess access, bool write,
            bool selfUndoing = false);
        ~Session();
        Session(const Session&) = delete;
        Session& operator=(const Session&) = delete;
        RepositoryConnection& connection() { return *_connection; }
        void commit();

    private:
        enum Kind { JOINED_IN_TRANSACTION, WRITER, CLIENT_WRITER, READER };
        NamespaceStore& _store;
        std::unique_lock<std::mutex> _lock;
        RepositoryConnection* _connection = nullptr;
        std::unique_ptr<RepositoryConnection> _reader;
        Kind _kind = READER;
        bool _write = false;
        bool _savepoint = false;
        bool _done = false;
    };

private:
    void committed();
    // Runs a rollback statement; the dictionary learns of it first.
    void rollBack(RepositoryConnection& connection, RepositoryConnection::Control control);
    void checkpointLoop();
    std::unique_ptr<RepositoryConnection> takeReader();
    void giveBackReader(std::unique_ptr<RepositoryConnection> reader);

    std::string _nameSpace;
    std::string _file;
    NameDictionary _names;
    std::mutex _writerMutex;
    std::unique_ptr<RepositoryConnection> _writer;
    bool _inTransaction = false;  // guarded by _writerMutex
    std::mutex _clientWriterMutex;
    std::unique_ptr<RepositoryConnection> _clientWriter;
    std::mutex _readersMutex;
    std::vector<std::unique_ptr<RepositoryConnection>> _readers;
    std::mutex _checkpointMutex;
    std::condition_variable _checkpointWake;
    bool _checkpointWanted = false;
    bool _stopping = false;
    std::thread _checkpointer;
};

} // namespace Pegasus

#endif
