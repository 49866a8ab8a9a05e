#pragma once

#include <string>

namespace ostrel {

/// What the platform layer asks of the system, answered by Qt: run loop, text measuring, locale, players, opening of
/// addresses, clipboard, dialog for files (with a QApplication only), pictures in GIF and WebP, screen reader and
/// reduced motion.
class QtPlatform final {
public:
    struct Options {
        /// BCP 47 tag of texts and dates; empty: the system's.
        std::string language;
    };

    /// Installs all of these; main thread, once a QGuiApplication exists and before the first window is made. A second
    /// call replaces what the first one installed. Motion is reduced when the system says so, or with
    /// OSTREL_REDUCE_MOTION=1 in the environment (0: never). Players use Qt's FFmpeg backend unless QT_MEDIA_BACKEND
    /// names another. Qt's debug messages are left out unless QT_LOGGING_RULES is set.
    static void install(const Options& options);

    QtPlatform() = delete;
};

}  // namespace ostrel
