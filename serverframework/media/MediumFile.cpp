#include "serverframework/media/MediumFile.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <unistd.h>

namespace ostrel {

namespace {

constexpr std::array<char, 8> magic = {'O', 'S', 'T', 'R', 'E', 'L', 'M', '1'};
constexpr std::string_view extension = ".medium";
constexpr std::size_t nameDigits = 32;
constexpr std::size_t longestText = 64 * 1024;

/// The end of the file, in the machine's byte order, because a cache stays on its machine. The texts stand before it.
struct Footer {
    std::uint64_t bodySize = 0;
    std::uint64_t bodyChecksum = 0;
    std::uint32_t urlSize = 0;
    std::uint32_t entityTagSize = 0;
    std::uint32_t lastModifiedSize = 0;
    std::uint32_t mustRevalidate = 0;
    /// The checksum of the texts and of the members above.
    std::uint64_t trailerChecksum = 0;
    std::array<char, 8> mark = magic;
};
static_assert(sizeof(Footer) == 48);

std::uint64_t checksumOfTrailer(std::string_view texts, const Footer& footer) {
    std::string all(texts);
    all.append(reinterpret_cast<const char*>(&footer), offsetof(Footer, trailerChecksum));
    return XXH3_64bits(all.data(), all.size());
}

}  // namespace

std::uint64_t MediumFile::checksumOf(const Data& body) { return XXH3_64bits(body.bytes(), body.size()); }

std::optional<std::uint64_t> MediumFile::checksumOf(int descriptor, std::size_t size) {
    constexpr std::size_t pieceBytes = std::size_t{256} * 1024;
    const std::unique_ptr<XXH3_state_t, decltype(&XXH3_freeState)> state(XXH3_createState(), &XXH3_freeState);
    if (!state || XXH3_64bits_reset(state.get()) != XXH_OK) return std::nullopt;
    std::string piece(std::min(size, pieceBytes), '\0');
    for (std::size_t at = 0; at < size;) {
        const ssize_t count =
            ::pread(descriptor, piece.data(), std::min(piece.size(), size - at), static_cast<off_t>(at));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return std::nullopt;
        XXH3_64bits_update(state.get(), piece.data(), static_cast<std::size_t>(count));
        at += static_cast<std::size_t>(count);
    }
    return XXH3_64bits_digest(state.get());
}

std::string MediumFile::trailer(std::string_view url, const MediumFacts& facts, std::size_t bodySize,
                                std::uint64_t checksum) {
    std::string text(url);
    text += facts.entityTag;
    text += facts.lastModified;
    Footer footer;
    footer.bodySize = bodySize;
    footer.bodyChecksum = checksum;
    footer.urlSize = static_cast<std::uint32_t>(url.size());
    footer.entityTagSize = static_cast<std::uint32_t>(facts.entityTag.size());
    footer.lastModifiedSize = static_cast<std::uint32_t>(facts.lastModified.size());
    footer.mustRevalidate = facts.mustRevalidate ? 1 : 0;
    footer.trailerChecksum = checksumOfTrailer(text, footer);
    text.append(reinterpret_cast<const char*>(&footer), sizeof footer);
    return text;
}

std::optional<MediumFile> MediumFile::read(const Data& file) {
    const std::string_view bytes = file.view();
    if (bytes.size() < sizeof(Footer)) return std::nullopt;
    Footer footer;
    std::memcpy(&footer, bytes.data() + bytes.size() - sizeof footer, sizeof footer);
    if (footer.mark != magic) return std::nullopt;
    // A sum of three numbers of 32 bits fits into 64 bits.
    const std::uint64_t texts = std::uint64_t{footer.urlSize} + footer.entityTagSize + footer.lastModifiedSize;
    const std::uint64_t rest = bytes.size() - sizeof footer;
    if (texts > longestText * 3 || texts > rest || footer.bodySize != rest - texts) return std::nullopt;
    std::string_view text = bytes.substr(footer.bodySize, texts);
    if (checksumOfTrailer(text, footer) != footer.trailerChecksum) return std::nullopt;

    MediumFile medium;
    const auto take = [&](std::size_t size) {
        const std::string_view piece = text.substr(0, size);
        text.remove_prefix(size);
        return std::string(piece);
    };
    medium.url = take(footer.urlSize);
    medium.facts.entityTag = take(footer.entityTagSize);
    medium.facts.lastModified = take(footer.lastModifiedSize);
    medium.facts.mustRevalidate = footer.mustRevalidate != 0;
    medium.checksum = footer.bodyChecksum;
    medium.body = file.slice(0, footer.bodySize);
    return medium;
}

std::string MediumFile::nameFor(std::string_view url) {
    constexpr const char* digits = "0123456789abcdef";
    XXH128_canonical_t canonical;
    XXH128_canonicalFromHash(&canonical, XXH3_128bits(url.data(), url.size()));
    std::string name;
    for (const unsigned char byte : canonical.digest) {
        name += digits[byte >> 4];
        name += digits[byte & 15];
    }
    return name + std::string(extension);
}

bool MediumFile::isName(std::string_view name) {
    return name.size() == nameDigits + extension.size() && name.substr(nameDigits) == extension &&
           name.substr(0, nameDigits).find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

}  // namespace ostrel
