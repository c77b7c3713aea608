#include <Pegasus/Repository/NamespaceStore.h>

#include <Pegasus/Common/Exception.h>
#include <Pegasus/Repository/LayoutUpgrade.h>

#include <sys/stat.h>

namespace Pegasus {

namespace {
// Idle read connections kept open; more may exist while many threads read.
const size_t MAX_IDLE_READERS = 8;
// How long the checkpoint thread waits for readers before it leaves the WAL
// file as it is until the next commit.
const int TRUNCATE_WAIT_MS = 200;
// The WAL size the writer connection keeps (its journal_size_limit).
const off_t WAL_KEPT_BYTES = 4 << 20;
}

NamespaceStore::NamespaceStore(const std::string& nameSpace, const std::string& file)
    : _nameSpace(nameSpace), _file(file)
{
    _writer.reset(new RepositoryConnection(file, false));
    if (_writer->firstLayout())
        LayoutUpgrade::fromFirstLayout(*_writer, _names);
    _names.load(*_writer);
    _writer->exec("PRAGMA wal_autocheckpoint=0");
    _checkpointer = std::thread([this] { checkpointLoop(); });
}

NamespaceStore::~NamespaceStore()
{
    {
        std::lock_guard<std::mutex> lock(_checkpointMutex);
        _stopping = true;
    }
    _checkpointWake.notify_all();
    _checkpointer.join();
    std::lock_guard<std::mutex> lock(_writerMutex);
    if (_inTransaction) {
        // Never commit on the way out: an unfinished load leaves nothing.
        try {
            _names.rolledBack();
            _writer->exec("ROLLBACK");
        } catch (const SqliteError&) {
        }
        _inTransaction = false;
    }
}

void NamespaceStore::committed()
{
    {
        std::lock_guard<std::mutex> lock(_checkpointMutex);
        _checkpointWanted = true;
    }
    _checkpointWake.notify_one();
}

void NamespaceStore::checkpointLoop()
{
    std::unique_ptr<SqliteDatabase> db;
    std::unique_lock<std::mutex> lock(_checkpointMutex);
    for (;;) {
        _checkpointWake.wait(lock, [this] { return _checkpointWanted || _stopping; });
        if (_stopping)
            return;
        _checkpointWanted = false;
        lock.unlock();
        try {
            if (!db)
                db.reset(new SqliteDatabase(_file, false, TRUNCATE_WAIT_MS));
            db->exec("PRAGMA wal_checkpoint(PASSIVE)");
            // A WAL grown past the size the writer keeps (a data load) is cut
            // back now rather than at the next write, which may be long off.
            // That needs every reader on the new data: one still on an
            // older snapshot makes it give up (busy) after a short wait, and
            // the next commit tries again.
            struct stat wal;
            if (::stat((_file + "-wal").c_str(), &wal) == 0 && wal.st_size > WAL_KEPT_BYTES)
                db->exec("PRAGMA wal_checkpoint(TRUNCATE)");
        } catch (const SqliteError&) {
            // Tried again after the next commit; the WAL stays valid meanwhile,
            // and closing the last connection checkpoints as well.
            db.reset();
        }
        lock.lock();
    }
}

void NamespaceStore::beginTransaction()
{
    std::lock_guard<std::mutex> lock(_writerMutex);
    if (_inTransaction)
        throw CIMException(CIM_ERR_FAILED,
            String(("a transaction is already open on namespace " + _nameSpace).c_str()));
    _writer->exec("BEGIN IMMEDIATE");
    _inTransaction = true;
}

void NamespaceStore::commitTransaction()
{
    std::lock_guard<std::mutex> lock(_writerMutex);
    if (!_inTransaction)
        throw CIMException(CIM_ERR_FAILED,
            String(("no transaction is open on namespace " + _nameSpace).c_str()));
    try {
        _writer->exec("COMMIT");
    } catch (const SqliteError&) {
        // A failed commit must not leave the transaction half open.
        try {
            _names.rolledBack();
            _writer->exec("ROLLBACK");
        } catch (const SqliteError&) {
        }
        _inTransaction = false;
        throw;
    }
    _inTransaction = false;
    committed();
}

void NamespaceStore::rollBackTransaction()
{
    std::lock_guard<std::mutex> lock(_writerMutex);
    if (!_inTransaction)
        throw CIMException(CIM_ERR_FAILED,
            String(("no transaction is open on namespace " + _nameSpace).c_str()));
    _inTransaction = false;
    _names.rolledBack();
    _writer->exec("ROLLBACK");
}

void NamespaceStore::rollBack(RepositoryConnection& connection,
    RepositoryConnection::Control control)
{
    // First: a writer that starts as soon as the rollback is done must
    // already find the dictionary's entries pending again.
    _names.rolledBack();
    connection.run(control);
}

std::unique_ptr<RepositoryConnection> NamespaceStore::takeReader()
{
    {
        std::lock_guard<std::mutex> lock(_readersMutex);
        if (!_readers.empty()) {
            std::unique_ptr<RepositoryConnection> reader = std::move(_readers.back());
            _readers.pop_back();
            return reader;
        }
    }
    return std::unique_ptr<RepositoryConnection>(new RepositoryConnection(_file, true));
}

void NamespaceStore::giveBackReader(std::unique_ptr<RepositoryConnection> reader)
{
    std::lock_guard<std::mutex> lock(_readersMutex);
    if (_readers.size() < MAX_IDLE_READERS)
        _readers.push_back(std::move(reader));
}

NamespaceStore::Session::Session(NamespaceStore& store, RepositoryAccess access, bool write,
    bool selfUndoing)
    : _store(store), _write(write)
{
    if (access == RepositoryAccess::Joined) {
        _lock = std::unique_lock<std::mutex>(store._writerMutex);
        if (store._inTransaction) {
            _kind = JOINED_IN_TRANSACTION;
            _connection = store._writer.get();
            _savepoint = write && !selfUndoing;
            if (_savepoint)
                _connection->run(RepositoryConnection::SAVEPOINT);
            return;
        }
        if (write) {
            _kind = WRITER;
            _connection = store._writer.get();
            _connection->run(RepositoryConnection::BEGIN_IMMEDIATE);
            return;
        }
        _lock.unlock();
    } else if (write) {
        _lock = std::unique_lock<std::mutex>(store._clientWriterMutex);
        if (!store._clientWriter) {
            store._clientWriter.reset(new RepositoryConnection(store._file, false));
            store._clientWriter->exec("PRAGMA wal_autocheckpoint=0");
        }
        _kind = CLIENT_WRITER;
        _connection = store._clientWriter.get();
        _connection->run(RepositoryConnection::BEGIN_IMMEDIATE);
        return;
    }
    _kind = READER;
    _reader = store.takeReader();
    _connection = _reader.get();
    // One snapshot for every statement of this call.
    _connection->run(RepositoryConnection::BEGIN);
}

void NamespaceStore::Session::commit()
{
    if (_done)
        return;
    if (_kind == JOINED_IN_TRANSACTION) {
        if (_savepoint)
            _connection->run(RepositoryConnection::RELEASE);
    } else {
        _connection->run(RepositoryConnection::COMMIT);
        if (_write)
            _store.committed();
    }
    _done = true;
}

NamespaceStore::Session::~Session()
{
    try {
        if (!_done) {
            if (_kind == JOINED_IN_TRANSACTION) {
                if (_savepoint) {
                    _store.rollBack(*_connection, RepositoryConnection::ROLLBACK_TO);
                    _connection->run(RepositoryConnection::RELEASE);
                }
            } else if (_write) {
                _store.rollBack(*_connection, RepositoryConnection::ROLLBACK);
            } else {
                _connection->run(RepositoryConnection::COMMIT);
            }
        }
    } catch (const SqliteError&) {
        // The connection is left as SQLite left it; a reader with a broken
        // state is dropped below rather than reused.
        _reader.reset();
    }
    if (_reader)
        _store.giveBackReader(std::move(_reader));
}

} // namespace Pegasus
