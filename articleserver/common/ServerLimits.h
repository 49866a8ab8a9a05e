#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace articleserver {

/// All limits of the article server; docs/protocol.md lists them for clients. A size is in bytes unless its
/// name says otherwise.
struct ServerLimits final {
    // The head of a request. httplib refuses a header line of more than 8192 bytes, so our limit is below
    // that. The request line is long because a caption travels in the query, where a byte can take three
    // ("%41").
    static constexpr std::size_t requestLine = 200 * 1024;
    static constexpr std::size_t requestPath = 4096;
    static constexpr std::size_t headerLine = 8000;
    static constexpr std::size_t head = 16 * 1024;
    static constexpr std::size_t headers = 64;
    static constexpr std::size_t fields = 32;

    // The bodies of requests.
    static constexpr std::size_t accountForm = 16 * 1024;
    static constexpr std::size_t commentForm = 128 * 1024;
    static constexpr std::size_t notificationForm = 32 * 1024;
    static constexpr std::size_t avatarFile = 5 * 1024 * 1024;
    static constexpr std::size_t avatarBody = avatarFile + 64 * 1024;
    /// Room for the longest title and the longest text when each of their bytes takes three.
    static constexpr std::size_t articleForm = 7 * 1024 * 1024;
    static constexpr std::uint64_t imageFile = 64 * 1024 * 1024;
    static constexpr std::uint64_t stillFile = 16 * 1024 * 1024;
    static constexpr std::uint64_t videoFile = std::uint64_t{8} * 1024 * 1024 * 1024;
    /// The text fields of one upload together; also the allowance for everything around its files.
    static constexpr std::size_t uploadFields = 256 * 1024;
    static constexpr std::size_t multipartParts = 16;
    static constexpr std::size_t multipartHeader = 2048;

    // Time. The server closes an idle connection earlier while connections occupy most of its threads.
    static constexpr auto headTime = std::chrono::seconds(10);
    static constexpr auto bodyTime = std::chrono::seconds(60);
    static constexpr auto stallTime = std::chrono::seconds(10);
    /// The lowest transfer speed of a body in bytes per second: a body of n bytes may take bodyTime and
    /// n / bodySpeed seconds.
    static constexpr std::uint64_t bodySpeed = 8 * 1024;
    static constexpr auto idleTime = std::chrono::seconds(15);
    static constexpr auto crowdedIdleTime = std::chrono::seconds(1);

    // Connections. A thread serves one connection at a time.
    static constexpr int connectionThreads = 64;
    static constexpr int crowdedConnections = 48;
    static constexpr std::size_t requestsPerConnection = 1000;
    static constexpr int listenBacklog = 128;
    /// Below connectionThreads, so that some threads always serve readers.
    static constexpr int uploadsAtOnce = 56;

    /// The space on the disk that uploads must leave free. The database needs it.
    static constexpr std::uint64_t freeSpace = 16 * 1024 * 1024;

    // Articles. Clients read at most 32 MiB of an answer, and JSON makes at most six bytes of one. These
    // limits keep the page of a list and the record of an article below that size.
    static constexpr std::size_t titleBytes = 1024 * 1024;
    static constexpr std::size_t textBytes = 1024 * 1024;
    static constexpr std::size_t captionBytes = 64 * 1024;
    static constexpr std::int64_t captionBytesPerArticle = 1024 * 1024;
    static constexpr std::int64_t mediaPerArticle = 1000;
    static constexpr std::size_t articleBytesPerPage = 2 * 1024 * 1024;
    static constexpr std::int64_t position = 1'000'000'000;
    static constexpr std::size_t placeCharacters = 32;
    static constexpr double durationSeconds = 1e7;

    // Content, in Unicode code points.
    static constexpr std::size_t nameCharacters = 40;
    static constexpr std::size_t passwordCharactersLeast = 8;
    static constexpr std::size_t passwordCharacters = 256;
    static constexpr std::size_t commentCharacters = 10000;
    static constexpr std::size_t notificationTitleCharacters = 100;
    static constexpr std::size_t notificationCharacters = 2000;
    static constexpr int pageSize = 20;
    /// The comments that the answer with an article holds at most.
    static constexpr int commentsPerAnswer = 5000;
    static constexpr std::size_t commentBytesPerAnswer = 2 * 1024 * 1024;
    static constexpr int commentsPerPage = 200;
    static constexpr int commentsPerPublicPage = 100;
    static constexpr int notificationsPerUser = 1000;

    // Pictures, in pixels.
    static constexpr int avatarSide = 4096;
    static constexpr int storedAvatarSide = 256;
    static constexpr int thumbnailSide = 400;
    /// The longer side of a video's still. The still fills the screen until the video plays.
    static constexpr int stillSide = 1280;
    static constexpr int pictureSide = 32'767;
    static constexpr std::int64_t picturePixels = 100'000'000;
    /// The memory that the coefficients of one picture may take while the server decodes it, and the number
    /// of pictures that the server decodes at the same time.
    static constexpr std::int64_t pictureMemory = 256 * 1024 * 1024;
    static constexpr int picturesAtOnce = 4;

    // The attempts that are allowed within attemptWindow.
    static constexpr auto attemptWindow = std::chrono::minutes(5);
    static constexpr int failedSignInsPerNameAndAddress = 10;
    static constexpr int failedSignInsPerAddress = 100;
    static constexpr int signUpsPerAddress = 100;
    static constexpr int newVisitorsPerAddress = 200;
    static constexpr int commentsPerAuthor = 60;
    static constexpr int notificationsPerSender = 30;
    static constexpr int articlesPerAuthor = 300;
    static constexpr std::size_t rememberedAttempters = 4096;

    // One hashing of a password takes 64 MiB of memory and about 0.1 seconds of one processor.
    static constexpr int hashingsAtOnce = 2;
    static constexpr int hashingsWaiting = 32;

    // Sessions.
    static constexpr auto sessionLife = std::chrono::hours(24 * 30);
    static constexpr auto sessionRenewal = std::chrono::hours(24);
    static constexpr auto visitorLife = std::chrono::hours(24 * 365);
    static constexpr int sessionsPerUser = 32;

    /// The time for which the server recognises a repeated request by its Idempotency-Key, and the longest
    /// key.
    static constexpr auto repeatLife = std::chrono::hours(24);
    static constexpr std::size_t repeatKey = 128;
};

}  // namespace articleserver
