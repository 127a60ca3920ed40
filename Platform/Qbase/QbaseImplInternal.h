#pragma once

#include "Qbase/ClassTableInternal.h"
#include "Qbase/ConnectionInternal.h"
#include "Qbase/DefinitionInternal.h"
#include "Qbase/HiddenInternal.h"
#include "Qbase/Qbase.h"
#include "Qbase/ValuesInternal.h"

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

/// What a handle is made of. Operations return why they failed; where SQLite fails they throw `qbase::SqlFailure`,
/// which `Run` turns into a doomed handle.
class QBASE_INTERNAL CQbase::Impl {
public:
    ~Impl();

    // --- running operations ---
    /// Runs an operation on an open handle.
    template <class Operation> bool Run(Operation operation) noexcept;
    /// Runs an operation whose failure dooms nothing.
    template <class Operation> bool RunLoose(Operation operation) noexcept;
    short LastError() const { return static_cast<short>(m_lastError); }

    // --- opening, locks and transactions (QbaseOpen.cpp) ---
    QbaseError Open(const std::wstring& definitionPath, const std::wstring& filePath, bool create);
    QbaseError OpenBeside(Impl& primary, const std::wstring& definitionPath, const std::wstring& filePath, bool create);
    QbaseError Close() noexcept;
    void Abandon() noexcept;
    QbaseError Lock(qbase::LockKind kind);
    QbaseError CopyTo(const std::wstring& target);
    QbaseError ContentVersion(long& version);

    // --- finding records (QbaseFind.cpp) ---
    QbaseError Count(long& count);
    QbaseError Exists(const char* classCode, const wchar_t* id);
    QbaseError FetchEqual(const char* classCode, const wchar_t* id);
    QbaseError FetchFirst(const char* classCode);
    QbaseError FetchNextMember();
    QbaseError FetchNextRecord();
    QbaseError SetFilter(short attributeId, const char* op, short value);
    QbaseError SetFilter(short attributeId, const char* op, const wchar_t* value);
    void ResetFilters() noexcept;

    // --- changing records (QbaseChange.cpp) ---
    QbaseError Create(const char* classCode, const std::string& id);
    QbaseError Save();
    QbaseError Delete(const char* classCode, const wchar_t* id);

    // --- attributes (QbaseValues.cpp) ---
    QbaseError ObjectId(CWsz& id) const;
    /// What the current record has, of the type asked for.
    struct Value {
        const qbase::Cell* cell = nullptr;
        std::size_t entrySize = 0;
    };
    QbaseError Get(short attributeId, qbase::AttributeType type, Value& value) const;
    /// The place for a new value of the type asked for; the caller fills it.
    struct NewValue {
        qbase::Cell* cell = nullptr;
        std::size_t entrySize = 0;
    };
    QbaseError Change(short attributeId, qbase::AttributeType type, NewValue& value);
    QbaseError RemoveAttribute(short attributeId);

private:
    struct Filter {
        short attributeId = 0;
        std::variant<std::int64_t, std::string> value;
    };

    /// A walk through one class: a statement and the place where it stands.
    struct Cursor {
        qbase::ClassTable* table = nullptr;
        qbase::Statement select;
        bool live = false;        ///< stands on a row
        sqlite3_int64 number = 0; ///< of that row
        unsigned place = 0;       ///< `Place()` when it came to stand there
    };
    using Cursors = std::map<std::string, Cursor>;

    bool IsOpen() const { return m_connection != nullptr; }
    bool IsLocked() const { return m_connection->Held() != qbase::LockKind::None; }

    /// A record that was looked for and is not there. Under a lock that stays so until this handle changes something.
    struct Absent {
        const qbase::ClassTable* table = nullptr;
        std::string id;
        unsigned place = 0; ///< `Place()` when it was looked for
    };

    // QbaseOpen.cpp
    QbaseError Prepare(const std::wstring& definitionPath, const std::wstring& filePath);
    QbaseError OpenConnection();
    QbaseError TryOpen(qbase::Waiter& waiter, bool& again);
    QbaseError CreateContent(bool& again);
    QbaseError JoinExamined(const std::shared_ptr<qbase::Connection>& connection, const std::wstring& definitionPath,
                            const std::wstring& filePath);
    void LookForDamage(qbase::Connection& connection);
    QbaseError Join(const std::shared_ptr<qbase::Connection>& connection);
    QbaseError Settle();
    QbaseError BeginOnTheFileAtThePath(qbase::LockKind kind);
    void RefreshTables();
    QbaseError CommitAndEnd() noexcept;
    void Forget() noexcept;

    // QbaseFind.cpp
    QbaseError FindTable(const char* classCode, qbase::ClassTable*& table);
    qbase::ClassTable& TableAt(std::size_t position);
    qbase::Statement SelectOfEachTable(const std::string& expression);
    bool HasRecord(qbase::ClassTable& table, const std::string& id);
    bool IsKnownAbsent(const qbase::ClassTable& table, const std::string& id) const;
    void CheckMayRead();
    void Load(qbase::ClassTable& table, const qbase::Statement& row);
    bool ReturnTo(const qbase::ClassTable& table, const std::string& id);
    void LeaveCurrent();
    bool IsAsStored(const qbase::Record& record) const;
    void ForgetLeft(const qbase::ClassTable& table, const std::string& id) noexcept;
    QbaseError AddFilter(short attributeId, const char* op, Filter filter);
    void FiltersChanged() noexcept;
    bool CanPass(const qbase::ClassTable& table) const;
    std::string ConditionOf(const qbase::ClassDefinition& definition) const;
    Cursor& CursorOf(Cursors& cursors, qbase::ClassTable& table);
    void StartFileWalk();
    void GoOnInFile();
    bool GoOn(Cursor& cursor, sqlite3_int64 from);
    bool Seek(Cursor& cursor, sqlite3_int64 after);
    bool StepFrom(Cursor& cursor);
    bool StandsOn(const Cursor& cursor, sqlite3_int64 number) const;
    void Take(Cursor& cursor);
    static void Halt(Cursor& cursor) noexcept;
    void ForgetCursors() noexcept;
    /// Differs from what it was once cursors may have lost their place.
    unsigned Place() const { return m_changes + m_connection->Epoch(); }

    // QbaseChange.cpp
    QbaseError CheckMayChange() const;
    /// Runs the change in the transaction, or in one of its own where there is none.
    QbaseError InTransaction(const std::function<QbaseError()>& change);
    QbaseError Insert();
    QbaseError Update();
    QbaseError Remove(qbase::ClassTable& table, const std::string& id);
    void Saved();
    void Complete(qbase::ClassTable& table);
    sqlite3_int64 NextNumber();
    sqlite3_int64 HighestNumber();

    // QbaseValues.cpp
    QbaseError FindPosition(short attributeId, std::size_t& position) const;
    QbaseError FindPosition(short attributeId, qbase::AttributeType type, std::size_t& position) const;

    QbaseError m_lastError = QbaseError::None;
    std::shared_ptr<const qbase::Definition> m_definition;
    std::shared_ptr<qbase::Connection> m_connection;
    qbase::Connection::File* m_file = nullptr; ///< of the connection
    std::string m_path;
    bool m_create = false;
    bool m_isCompanion = false;
    long m_openings = 0; ///< how often this handle has opened a file
    std::vector<std::unique_ptr<qbase::ClassTable>> m_tables;
    qbase::Record m_record;
    Absent m_absent;
    std::array<qbase::Record, 4> m_left; ///< were current and are as the file has them
    std::size_t m_nextLeft = 0;          ///< where the next one goes
    std::vector<Filter> m_filters;
    Cursors m_memberCursors;
    Cursors m_fileCursors;
    Cursor* m_member = nullptr;      ///< of the last walk through one class, while the filters are the same
    std::vector<Cursor*> m_fileWalk; ///< of the last walk through all classes, while the filters are the same
    Cursor* m_fileTaken = nullptr;   ///< of them, the one that gave the last record
    unsigned m_changes = 0;
    std::optional<sqlite3_int64> m_lastNumber; ///< given in the transaction with `m_numberEpoch`
    unsigned m_numberEpoch = 0;
};

template <class Operation> bool CQbase::Impl::RunLoose(Operation operation) noexcept {
    try {
        m_lastError = operation();
    } catch (const qbase::SqlFailure& failure) {
        m_lastError = qbase::ErrorOf(failure.code);
    } catch (const std::exception&) { // memory ran out
        m_lastError = QbaseError::Disk;
    }
    return m_lastError == QbaseError::None;
}

template <class Operation> bool CQbase::Impl::Run(Operation operation) noexcept {
    return RunLoose([&] {
        if (!IsOpen())
            return QbaseError::WrongState;
        if (m_connection->IsDoomed())
            return QbaseError::Doomed;
        m_connection->Waiting().Start();
        try {
            return operation();
        } catch (...) {
            m_connection->Doom();
            throw;
        }
    });
}
