#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace articleserver {

/// Every limit of the article server, in one place; docs/protocol.md lists them for clients.
/// Sizes are bytes unless a name says otherwise.
struct ServerLimits final {
    // The head of a request. httplib's own bound of a header line is 8192; ours stays below it. A caption travels in the
    // query, three bytes for each of its own.
    static constexpr std::size_t requestLine = 200 * 1024;
    static constexpr std::size_t requestPath = 4096;
    static constexpr std::size_t headerLine = 8000;
    static constexpr std::size_t head = 16 * 1024;
    static constexpr std::size_t headers = 64;
    static constexpr std::size_t fields = 32;

    // Bodies.
    static constexpr std::size_t accountForm = 16 * 1024;
    static constexpr std::size_t commentForm = 128 * 1024;
    static constexpr std::size_t notificationForm = 32 * 1024;
    static constexpr std::size_t avatarFile = 5 * 1024 * 1024;
    static constexpr std::size_t avatarBody = avatarFile + 64 * 1024;
    /// A title and a text at their longest, each byte as three.
    static constexpr std::size_t articleForm = 7 * 1024 * 1024;
    static constexpr std::uint64_t imageFile = 64 * 1024 * 1024;
    static constexpr std::uint64_t stillFile = 16 * 1024 * 1024;
    static constexpr std::uint64_t videoFile = std::uint64_t{8} * 1024 * 1024 * 1024;
    /// The fields of an upload together, and everything around its files.
    static constexpr std::size_t uploadFields = 256 * 1024;
    static constexpr std::size_t multipartParts = 16;
    static constexpr std::size_t multipartHeader = 2048;

    // Time. A silent connection is let go sooner while most threads are taken.
    static constexpr auto headTime = std::chrono::seconds(10);
    static constexpr auto bodyTime = std::chrono::seconds(60);
    static constexpr auto stallTime = std::chrono::seconds(10);
    /// Bytes a second that a body has to reach on the whole, beyond bodyTime.
    static constexpr std::uint64_t bodySpeed = 8 * 1024;
    static constexpr auto idleTime = std::chrono::seconds(15);
    static constexpr auto crowdedIdleTime = std::chrono::seconds(1);

    // Connections. One thread serves one connection at a time.
    static constexpr int connectionThreads = 64;
    static constexpr int crowdedConnections = 48;
    static constexpr std::size_t requestsPerConnection = 1000;
    static constexpr int listenBacklog = 128;
    /// The other threads are left to those who read.
    static constexpr int uploadsAtOnce = 56;

    /// What an upload leaves free on the disk, for the database above all.
    static constexpr std::uint64_t freeSpace = 16 * 1024 * 1024;

    // Articles. The page of a list and the record of an article stay below the 32 MiB that clients take of an answer, JSON
    // making six bytes of one at most.
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
    /// What one answer holds of an article's comments, beside the article itself.
    static constexpr int commentsPerAnswer = 5000;
    static constexpr std::size_t commentBytesPerAnswer = 2 * 1024 * 1024;
    static constexpr int commentsPerPage = 200;
    static constexpr int commentsPerPublicPage = 100;
    static constexpr int notificationsPerUser = 1000;

    // Pictures, in pixels.
    static constexpr int avatarSide = 4096;
    static constexpr int storedAvatarSide = 256;
    static constexpr int thumbnailSide = 400;
    /// A video's still is all that is seen of it before it plays, so it has the width of a screen.
    static constexpr int stillSide = 1280;
    static constexpr int pictureSide = 32'767;
    static constexpr std::int64_t picturePixels = 100'000'000;
    /// What the coefficients of one picture may take in memory, in bytes, while it is decoded; and how many are at once.
    static constexpr std::int64_t pictureMemory = 256 * 1024 * 1024;
    static constexpr int picturesAtOnce = 4;

    // Attempts within attemptWindow.
    static constexpr auto attemptWindow = std::chrono::minutes(5);
    static constexpr int failedSignInsPerNameAndAddress = 10;
    static constexpr int failedSignInsPerAddress = 100;
    static constexpr int signUpsPerAddress = 100;
    static constexpr int newVisitorsPerAddress = 200;
    static constexpr int commentsPerAuthor = 60;
    static constexpr int notificationsPerSender = 30;
    static constexpr int articlesPerAuthor = 300;
    static constexpr std::size_t rememberedAttempters = 4096;

    // Password hashing takes 64 MiB and a processor for about 0.1 seconds each.
    static constexpr int hashingsAtOnce = 2;
    static constexpr int hashingsWaiting = 32;

    // Sessions.
    static constexpr auto sessionLife = std::chrono::hours(24 * 30);
    static constexpr auto sessionRenewal = std::chrono::hours(24);
    static constexpr auto visitorLife = std::chrono::hours(24 * 365);
    static constexpr int sessionsPerUser = 32;

    /// For how long a repeated request is known as one (Idempotency-Key); its key.
    static constexpr auto repeatLife = std::chrono::hours(24);
    static constexpr std::size_t repeatKey = 128;
};

}  // namespace articleserver
