#pragma once

// Stands in for the download server: serves a folder below /downloads/ over HTTP or HTTPS, and can be told to
// fail in the ways in which servers fail.

#include "certificate.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kst::standin {

struct DownloadFaults {
    std::string onlyPath;                ///< only requests whose path contains this fail; empty: all
    std::optional<int> status;           ///< answer with this status instead of the file
    std::string redirect;                ///< answer with a redirect to this address
    std::optional<std::size_t> truncate; ///< announce the whole file, send this many bytes, close
    double stallSeconds = 0.0;           ///< say nothing for so long before the first byte of the content
    bool endless = false;                ///< send a content that never ends
};

struct DownloadOptions {
    std::filesystem::path folder;
    int port = 0; ///< 0: any free one
    bool https = false;
    std::optional<TestCertificate> certificate; ///< of HTTPS; made on the spot when absent
    DownloadFaults faults;
    bool tellRequests = false; ///< one line on the standard output for each request
};

/// Serves from its creation to its end, on threads of its own, on 127.0.0.1.
class DownloadServer {
public:
    /// Throws std::runtime_error when the folder does not exist or the port cannot be had.
    explicit DownloadServer(DownloadOptions options);
    ~DownloadServer();
    DownloadServer(const DownloadServer&) = delete;
    DownloadServer& operator=(const DownloadServer&) = delete;

    int port() const;
    /// What a client takes as its download root, ending in "downloads/".
    std::string root() const;
    /// The certificate to trust, PEM; empty without HTTPS.
    std::string certificate() const;
    /// The paths asked for so far, in order, each with its status behind a blank.
    std::vector<std::string> requests() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace kst::standin
