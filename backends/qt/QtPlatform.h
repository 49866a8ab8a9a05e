#pragma once

#include <string>

namespace ostrel {

/// What the platform layer asks of the system, answered by Qt: run loop, text measuring, locale, players, opening of
/// addresses, clipboard, dialog for files (with a QApplication only), pictures in GIF and WebP, screen reader and reduced
/// motion.
class QtPlatform final {
public:
    struct Options {
        std::string language;  ///< BCP 47 tag of texts and dates; empty: the system's
    };

    /// Installs all of it; main thread, once a QGuiApplication exists and before the first window is made. Calling it
    /// again replaces what was installed. Motion is reduced when the system says so, or with OSTREL_REDUCE_MOTION=1 in
    /// the environment (0: never). Players use Qt's FFmpeg backend unless QT_MEDIA_BACKEND
    /// names another; unless QT_LOGGING_RULES is set, Qt's messages for debugging are left out. The clock stays the system's own, which the platform uses anyway.
    static void install(const Options& options);

    QtPlatform() = delete;
};

}  // namespace ostrel
