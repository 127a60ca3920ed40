#pragma once

#include <functional>
#include <memory>
#include <string>

namespace tolm::bench {

/// Posts a JSON text with a fresh client and gives back the body, in the way that costs the HTTP library least: the
/// body taken as one string, read in pieces of 1 MiB.
std::string PostBare(const std::string& address, const std::string& path, const std::string& token,
                     const std::string& body);

/// Downloads a project's increment and parses it.
void DownloadBare(const std::string& project, int version);

/// The parsed answer to a download, whatever it is; empty when it is no object.
std::shared_ptr<const void> BareDownload(const std::string& address, const std::string& path, const std::string& token);

/// What makes a JSON tree once more, member by member, and its text.
std::function<std::string()> BareEncoder(const std::string& text);

} // namespace tolm::bench
