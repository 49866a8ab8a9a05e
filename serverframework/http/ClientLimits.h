#pragma once

#include <cstddef>
#include <cstdint>

namespace ostrel {

// Every limit of the client, once. Sizes are in bytes, times in seconds.

/// Connections and single transfers, whatever is requested.
struct TransportLimits {
    double connectTimeoutSeconds = 10;
    /// A transfer that is slower than its `HttpRequest::minimumSpeed` for so long is given up. The whole transfer may
    /// take any time.
    int stallTimeoutSeconds = 30;
    /// Two more than media and uploads can take together, so that the other requests never wait for them.
    int connectionsPerHost = 14;
    /// To all hosts together.
    int connections = 24;
    int maximumRedirects = 5;
    /// All header lines of an answer together.
    std::size_t maximumHeaderBytes = std::size_t{256} << 10;
    /// The body of a refused medium, which nobody reads.
    std::size_t maximumRefusalBytes = std::size_t{256} << 10;
    std::size_t uploadBufferBytes = std::size_t{256} << 10;
    /// How often the progress of an upload is reported at most.
    double progressPerSecond = 60;
};

/// Requests to the application's own server.
struct RequestLimits {
    /// The address of a request, which a caption can make long. libcurl takes at most 1 MiB of a request's head; the
    /// rest is left to the headers.
    std::size_t maximumAddressBytes = 1'000'000;
    /// A longer text of an answer is an error.
    std::size_t maximumAnswerBytes = std::size_t{32} << 20;
    /// A page with more records is refused as unreadable.
    static constexpr std::size_t maximumRecords = 200'000;
};

struct UploadLimits {
    /// Uploads that are being prepared or sent at the same time; others wait.
    int simultaneous = 6;
    /// Threads that make files: encoding a picture keeps one processor busy.
    int makers = 2;
    /// An upload with fewer bytes of files is not listed as work in progress: it ends before anybody has read its
    /// title.
    std::uint64_t shownBytes = std::uint64_t{256} << 10;
};

/// Requests of media, and the media in memory.
struct MediaLimits {
    /// Transfers of media at the same time.
    int simultaneous = 4;
    /// Transfers that have taken `slowSeconds` do not count as long as there are at most so many of them.
    int simultaneousSlow = 2;
    double slowSeconds = 3;
    std::size_t maximumMediumBytes = std::size_t{1024} << 20;
    /// A transfer that is slower than so many bytes a second for the stall time-out is given up.
    int minimumSpeed = 100;
    /// The whole transfer.
    double maximumSeconds = 3600;
    /// The media kept in memory; a medium larger than a quarter of this is not kept there.
    std::size_t maximumCacheBytes = std::size_t{32} << 20;
    /// A larger body is gathered in a file, so that it costs no memory.
    std::size_t bodyInMemoryBytes = std::size_t{256} << 10;
    /// A larger body fails when no file can be written.
    std::size_t bodyWithoutFileBytes = std::size_t{64} << 20;
};

/// The media kept on the disk, by all processes that share the folder together.
struct MediaDiskLimits {
    /// A medium larger than half of this is not kept.
    std::size_t maximumBytes = std::size_t{1024} << 20;
    std::size_t maximumFiles = 20'000;
    /// Larger media are checked by `MediaDiskCache::Checking::all` only, which takes a processor 0.1 ms a megabyte and
    /// reads the disk.
    std::size_t checkedAtOnce = std::size_t{4} << 20;
    /// Up to this size a medium is read, above it is mapped.
    std::size_t readAtOnce = std::size_t{256} << 10;
    /// A sweep removes unfinished files that are older than this and that nobody holds any more.
    double leftOverSeconds = 60;
};

/// For how long an answer of a server is taken as it is (RFC 9111), in seconds.
struct FreshnessLimits {
    /// Bounds of what is assumed when the server says nothing: a tenth of the medium's age.
    static constexpr std::int64_t shortestGuess = std::int64_t{5} * 60;
    static constexpr std::int64_t longestGuess = std::int64_t{24} * 3600;
    /// The upper bound, also when the server states a longer time.
    static constexpr std::int64_t longest = std::int64_t{365} * 24 * 3600;
};

struct FaceLimits {
    std::size_t maximumFaceBytes = std::size_t{1} << 20;
    /// The faces kept in memory; a face larger than a quarter of this is not kept.
    std::size_t maximumCacheBytes = std::size_t{8} << 20;
    /// For so long a kept face is shown without asking the server.
    double freshSeconds = 300;
    /// For so long the server is not asked again for the face of a user who has none.
    double missingSeconds = 60;
};

struct ClientLimits {
    TransportLimits transport;
    RequestLimits requests;
    UploadLimits uploads;
    MediaLimits media;
    MediaDiskLimits mediaDisk;
    FaceLimits faces;
};

static_assert(ClientLimits{}.transport.connectionsPerHost == ClientLimits{}.uploads.simultaneous +
                                                                 ClientLimits{}.media.simultaneous +
                                                                 ClientLimits{}.media.simultaneousSlow + 2);

}  // namespace ostrel
