#include "Bench/BareHttp.h"

#include "Bench/Measure.h"
#include "Bench/World.h"

#include <cpprest/http_client.h>
#include <cpprest/json.h>

namespace tolm::bench {
namespace {

constexpr std::size_t kChunk = std::size_t{1} << 20;

} // namespace

std::string PostBare(const std::string& address, const std::string& path, const std::string& token,
                     const std::string& body) {
    web::http::client::http_client_config config;
    config.set_chunksize(kChunk);
    config.set_timeout(std::chrono::minutes(5));
    web::http::client::http_client client(web::uri(address), config);
    web::http::http_request request("POST");
    request.headers().add("x-kfe-userid", "bench");
    request.headers().add("Authorization", token);
    request.set_request_uri(web::uri(path));
    request.set_body(body, "application/json");
    return client.request(request).get().extract_string().get();
}

std::shared_ptr<const void> BareDownload(const std::string& address, const std::string& path,
                                         const std::string& token) {
    const std::string text = PostBare(address, path, token, R"({"tolm_version":""})");
    auto tree = std::make_shared<const web::json::value>(web::json::value::parse(text));
    return tree->is_object() && tree->at("code").as_string() == "10000" ? tree : nullptr;
}

void DownloadBare(const std::string& project, int version) {
    const auto tree = BareDownload(Served().Address(),
                                   "/api/DownloadVersion/" + project + "/" + std::to_string(version), Served().Token());
    Require(tree != nullptr, "a download fails");
}

std::function<std::string()> BareEncoder(const std::string& text) {
    const auto tree = std::make_shared<web::json::value>(web::json::value::parse(text));
    return [tree] { return web::json::value(*tree).serialize(); };
}

} // namespace tolm::bench
