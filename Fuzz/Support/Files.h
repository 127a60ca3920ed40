#pragma once

#include <string>
#include <vector>

namespace tolmfuzz {

/// The bytes of a file; empty when there is none.
std::string ReadBytes(const std::wstring& path);
void WriteBytes(const std::wstring& path, const std::string& bytes);
/// Names of what stands in a folder, in order.
std::vector<std::string> NamesIn(const std::wstring& folder);
void RemoveAll(const std::wstring& path);

/// The value of a query on an SQLite file, as text; "" for NULL and without a row, the error's text where it fails.
std::string SqlValue(const std::wstring& path, const std::string& query);
/// Runs statements on an SQLite file; `?1` is the blob or text. False where one fails.
struct SqlBinding {
    enum class Kind { Null, Integer, Real, Text, Blob } kind = Kind::Null;
    std::string bytes;
    long long integer = 0;
    double real = 0;
};
bool RunSql(const std::wstring& path, const std::string& statement, const SqlBinding& binding);

} // namespace tolmfuzz
