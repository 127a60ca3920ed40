#pragma once

#include "Qbase/QbaseTypes.h"
#include "Vorn/Export.h"

#include <memory>
#include <string>

/// Why the last operation of a handle failed.
enum class QbaseError : short {
    None = 0,
    BadArgument = 1,        ///< an empty path, a null pointer, an unknown class or attribute, a wrong type
    NotFound = 2,           ///< no such file, record or attribute
    NotAStore = 3,          ///< the file is no store, or is damaged
    NewerVersion = 4,       ///< the file was written by a later version
    BadDefinition = 5,      ///< the definition file cannot be read or understood
    Locked = 6,             ///< the lock was not to be had within the waiting time
    NotLockedForUpdate = 7, ///< a change was tried under a read lock
    Doomed = 8,             ///< an earlier failure dooms the handle: nothing of its transaction is kept
    Disk = 9,               ///< the file system reported a failure
    WrongState = 10,        ///< not open, open already, or no current record
    Changed = 11,           ///< a store changed since it was copied
};

/// A handle on one object-database file.
///
/// A store holds records in classes; classes and their attributes come from the definition file. A record lives in
/// a class under an id and has the attributes that were set. A handle is closed, open, or open and locked; it is
/// used from one thread at a time, and it never outlives its companions (`openBeside`).
///
/// An open with a lock is one transaction, which begins with the lock and is committed by `closeDatabase` or by
/// destruction. An open without a lock commits each `saveRec` and `deleteRec` by itself, save after
/// `beginTransaction`. A read or write that fails for the disk's or a lock's sake dooms the handle: nothing of the
/// transaction is kept, all later calls fail, and `closeDatabase` returns false. No operation throws.
class TOLM_PLATFORM_API CQbase {
public:
    CQbase();
    /// Closes the store as `closeDatabase` does; never throws.
    ~CQbase();
    CQbase(const CQbase&) = delete;
    CQbase& operator=(const CQbase&) = delete;

    // --- opening, locks and transactions -----------------------------------------------------------------------

    /// Opens the file. With `create` a file that does not exist (or is empty) comes into being with its schema,
    /// on disk when the call returns. A damaged, newer or foreign file fails to open and is left as it was.
    bool openDatabase(const std::wstring& definitionPath, const std::wstring& filePath, bool create);

    /// Opens the file as a companion of `primary`, which must be open: both share one connection, and what both
    /// change is committed together or not at all when `primary` is closed. It may be called before or after
    /// `primary` is locked and shares its lock and transaction. The companion must be closed or destroyed before
    /// `primary`; its own `closeDatabase` commits nothing. On failure `primary` is as it was and stays usable.
    bool openBeside(CQbase& primary, const std::wstring& definitionPath, const std::wstring& filePath, bool create);

    /// Commits what was changed, closes the file and releases the lock. False when the changes are not on disk;
    /// then none of them is. True for a handle that was not open.
    bool closeDatabase();

    /// Gives up the transaction and closes; the file stays as it was at the lock. A companion gives up its primary's
    /// transaction with its own.
    void abandon();

    /// Takes a shared lock; changes fail until the store is closed.
    bool lockForRead();
    /// Takes the exclusive lock. Both wait at most `lockTimeout`. A thread that already holds a store's update
    /// lock and asks again through another handle is refused at once, as is one that holds a read lock and asks for
    /// the update lock. A handle that has the lock already says true; a read lock does not turn into an update lock.
    bool lockForUpdate();

    /// On an open without a lock: gathers all further changes into one transaction, committed at the close. It takes
    /// the update lock.
    bool beginTransaction();

    /// A number that is another one when somebody else committed to the file since it was last asked for on this
    /// handle. It does not change with this handle's own commits and says nothing about how often.
    bool getContentVersion(long& version);

    /// True when this thread holds a lock on the store at the path, through whatever handle.
    static bool isHeldByThisThread(const std::wstring& filePath);

    /// Code of the last failure; `QbaseError::None` after a success.
    short getLastError() const;

    /// How long a lock is waited for, in milliseconds; 5000 by default. For all handles of the process.
    static void setLockTimeout(int milliseconds);
    static int lockTimeout();

    // --- finding records ---------------------------------------------------------------------------------------

    /// Counts the records of the whole file.
    bool getNmbOfRecs(long& count);
    /// True when the record exists; does not change the current record and sees every record.
    bool existRec(const char* classCode, const wchar_t* id);
    bool existRec(const char* classCode, const std::wstring& id) { return existRec(classCode, id.c_str()); }
    /// Makes this record the current one, whatever the filters say. A failure leaves the current record.
    bool fetchEqualRec(const char* classCode, const wchar_t* id);
    bool fetchEqualRec(const char* classCode, const std::wstring& id) { return fetchEqualRec(classCode, id.c_str()); }
    /// Makes the first record of the class, in order of creation, that passes the filters the current one.
    bool fetchFirstMember(const char* classCode);
    /// Goes on from the current record within its class, and through the filters.
    bool fetchNextMember();
    /// Goes on from the current record through all classes, in order of creation, and through the filters.
    bool fetchNextRec();
    /// Adds a filter; the only operator is "=". Filters hold until `resetFilters`; a missing attribute never
    /// passes, and a class that lacks the attribute has no passing record.
    bool setFilter(short attributeId, const char* op, short value);
    bool setFilter(short attributeId, const char* op, const wchar_t* value);
    void resetFilters();

    // --- changing records --------------------------------------------------------------------------------------

    /// Makes a record that stands only in the handle and makes it current; nothing is stored before `saveRec`.
    /// False for an id that stands, and then nothing moves.
    bool createRec(const char* classCode, const wchar_t* id);
    bool createRec(const char* classCode, const std::wstring& id) { return createRec(classCode, id.c_str()); }
    bool createRec(const char* classCode, const char* id);
    /// Stores what was set on the current record.
    bool saveRec();
    /// Removes the record.
    bool deleteRec(const char* classCode, const wchar_t* id);
    bool deleteRec(const char* classCode, const std::wstring& id) { return deleteRec(classCode, id.c_str()); }

    // --- attributes of the current record ----------------------------------------------------------------------
    // A getter returns false when the record lacks the attribute, and leaves the value as it was. Values that were
    // set are read back before they are saved.

    bool getObjId(CWsz& id);
    bool getByte(short attributeId, unsigned char& value);
    bool getShort(short attributeId, short& value);
    bool getLong(short attributeId, long& value);
    bool getFloat(short attributeId, float& value);
    bool getDouble(short attributeId, double& value);
    /// The int is not used.
    bool getWsz(short attributeId, CWsz& text, int);
    /// At most `maxCount` entries are given back; the last int is not used.
    bool getWszArray(short attributeId, CWszArray& texts, int maxCount, int);
    bool getFloatArray(short attributeId, CFloatArray& values);
    /// Copies a binary attribute of the size that the definition gives; any other stored length is refused.
    bool getBinary(short attributeId, void* bytes);
    /// The bytes of a binary array, and their count.
    bool getBinaryArray(short attributeId, CByteBuffer& bytes, int& byteCount);

    bool setByte(short attributeId, unsigned char value);
    bool setShort(short attributeId, short value);
    bool setLong(short attributeId, long value);
    bool setFloat(short attributeId, float value);
    bool setDouble(short attributeId, double value);
    /// `length` in characters; -1 for zero-terminated text.
    bool setWsz(short attributeId, const wchar_t* text, int length);
    bool setWszArray(short attributeId, const CWszArray& texts, int);
    bool setFloatArray(short attributeId, const float* values, int count);
    /// The size comes from the definition; the short is not used.
    bool setBinary(short attributeId, const void* bytes, short);
    /// `count` entries of the size that the definition gives; the short is not used.
    bool setBinaryArray(short attributeId, const void* bytes, int count, short);
    /// True also when the record has no such attribute.
    bool removeAttribute(short attributeId);

    // --- whole files -------------------------------------------------------------------------------------------

    /// Copies the store, as this handle sees it, over the file at `target`, with numbers and order of its records.
    /// A handle that is locked goes on holding its lock.
    bool copyTo(const std::wstring& target);
    /// Copies a store, under a read lock, over the file at `target`. False when `source` will not open as a store.
    static bool copyStore(const std::wstring& source, const std::wstring& target);
    /// Removes a store together with its journal. True when none stands there afterwards.
    static bool removeStore(const std::wstring& filePath);

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

/// Two stores that are worked on as copies and take over in the end, in one commit, what the copies hold.
///
/// Between `make` and `putBack` the stores are free for everybody: nothing is locked, and a change that somebody
/// makes meanwhile is never overwritten. The object is used from one thread at a time; it owns neither stores nor
/// copies. No operation throws.
class TOLM_PLATFORM_API CQbaseWorkingCopies {
public:
    /// A store and where its copy stands.
    struct Pair {
        std::wstring store;
        std::wstring copy;
    };

    CQbaseWorkingCopies();
    /// Lets go of the stores; the copies stay.
    ~CQbaseWorkingCopies();
    CQbaseWorkingCopies(const CQbaseWorkingCopies&) = delete;
    CQbaseWorkingCopies& operator=(const CQbaseWorkingCopies&) = delete;

    /// Copies both stores, each over the file at its `copy`, while both are locked for reading: the copies are of one
    /// moment. A file that will not open as a store is copied byte by byte, so that the opening of its copy tells
    /// what is wrong with it; then nothing can be put back. False when a file cannot be copied or a lock not be had.
    bool make(const Pair& first, const Pair& second);

    /// Gives both stores the contents of their copies, numbers and order of the records included, in one commit: a
    /// crash at any moment leaves both as they were or both new. The copies must be closed; they stay. What did not
    /// change is not written. False, and both stores as they were, when a store changed or is another file since
    /// `make`, or a copy is another file than the one made then (`QbaseError::Changed`), when a lock is not to be had,
    /// or when a copy is no store. After it, whatever it returned, nothing can be put back until the next `make`.
    bool putBack();

    /// Code of the last failure; `QbaseError::None` after a success.
    short getLastError() const;

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};
