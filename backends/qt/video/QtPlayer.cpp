#include "backends/qt/video/QtPlayer.h"

#include "backends/qt/system/QtConversions.h"
#include "backends/qt/video/VideoFileFacts.h"

#include <algorithm>
#include <mutex>
#include <QAudioDevice>
#include <QAudioOutput>
#include <QCoreApplication>
#include <QMediaDevices>
#include <QMediaMetaData>
#include <QMediaPlayer>
#include <QSet>
#include <QThread>
#include <QThreadPool>
#include <QUrl>
#include <QVideoSink>

namespace ostrel {

namespace {

constexpr std::int32_t timeScale = 1000;

/// The threads of all players. Its destructor waits for them at the end of the application.
class PlayerThreads final {
public:
    static QThread* start() {
        static const bool isRegistered = [] {
            qAddPostRoutine(waitForAll);
            return true;
        }();
        (void)isRegistered;
        auto* thread = new QThread;
        thread->setObjectName(QStringLiteral("player"));
        running().insert(thread);
        QObject::connect(thread, &QThread::finished, qApp, [thread] {
            if (running().remove(thread)) delete thread;
        });
        thread->start();
        return thread;
    }

private:
    static QSet<QThread*>& running() {
        static QSet<QThread*> threads;
        return threads;
    }
    static void waitForAll() {
        for (QThread* thread : std::exchange(running(), {})) {
            thread->quit();
            // A thread that hangs in a connection is not deleted; the end of the process ends the thread.
            if (thread->wait(static_cast<unsigned long>(QtPlayer::longestFarewell * 1000))) delete thread;
        }
    }
};

/// Reads the orientation of a file's frames while the player opens the file; reading the header is the faster of the
/// two. Frames from a server are not delayed for it.
void findOrientation(const QUrl& url, const std::shared_ptr<VideoPicture>& picture) {
    // A pool of its own, with enough threads that a few servers that hang do not delay a local file.
    static QThreadPool lookers;
    lookers.setMaxThreadCount(8);
    const bool isLocal = url.isLocalFile();
    if (isLocal) picture->awaitOrientation();
    std::string address =
        isLocal ? "file:" + toUtf8(url.toLocalFile()) : url.toString(QUrl::FullyEncoded).toStdString();
    lookers.start([weak = std::weak_ptr<VideoPicture>(picture), address = std::move(address)] {
        if (weak.expired()) return;
        const VideoOrientation orientation = videoOrientationOf(address, QtPlayer::longestLook);
        if (const auto shown = weak.lock()) shown->setOrientation(orientation);
    });
}

}  // namespace

/// The last state that the player has reported, and the numbers of its commands.
struct QtPlayer::Report {
    // Guards the members below.
    mutable std::mutex mutex;
    AVPlayerStatus status = AVPlayerStatus::unknown;
    // Play was requested, and nothing has ended it since.
    bool wantsPlay = false;
    // The player plays and does not wait for data.
    bool isMoving = false;
    // Milliseconds; a negative duration is not known.
    std::int64_t duration = -1, position = 0;
    // The numbers of the last command that was issued, and of the last one that was handled.
    std::uint64_t issued = 0, handled = 0;

    /// The player has handled all commands, so that its reports are up to date.
    bool isCurrent() const { return issued == handled; }
};

/// The part that lives on the player's thread.
class QtPlayer::Worker final : public QObject {
public:
    Worker(QUrl url, std::shared_ptr<Report> report, std::shared_ptr<VideoPicture> picture)
        : url_(std::move(url)), report_(std::move(report)), picture_(std::move(picture)) {}

    void open() {
        player_ = new QMediaPlayer(this);
        sink_ = new QVideoSink(this);
        // Called on the decoder's thread.
        connect(
            sink_, &QVideoSink::videoFrameChanged, sink_,
            [picture = picture_](const QVideoFrame& frame) { picture->setFrame(frame); }, Qt::DirectConnection);
        connect(player_, &QMediaPlayer::mediaStatusChanged, this, &Worker::refresh);
        connect(player_, &QMediaPlayer::playbackStateChanged, this, &Worker::refresh);
        connect(player_, &QMediaPlayer::durationChanged, this, &Worker::refresh);
        connect(player_, &QMediaPlayer::positionChanged, this, &Worker::refresh);
        connect(player_, &QMediaPlayer::errorOccurred, this, [this](QMediaPlayer::Error error, const QString&) {
            if (error != QMediaPlayer::NoError) fail();
        });
        player_->setVideoSink(sink_);
        findOrientation(url_, picture_);
        player_->setSource(url_);
        refresh();
    }

    void addSound() { player_->setAudioOutput(new QAudioOutput(this)); }

    /// Runs a command that the main thread has issued.
    template <class Command>
    void perform(std::uint64_t number, Command command) {
        command(*player_);
        {
            const std::lock_guard lock(report_->mutex);
            report_->handled = number;
        }
        refresh();
    }

private:
    void fail() {
        const std::lock_guard lock(report_->mutex);
        // An error during playback also ends the playback; the frames shown so far stay.
        report_->status = AVPlayerStatus::failed;
        report_->wantsPlay = report_->isMoving = false;
    }

    void refresh() {
        const QMediaPlayer::MediaStatus media = player_->mediaStatus();
        if (media == QMediaPlayer::InvalidMedia) return fail();
        const bool isOpen = media == QMediaPlayer::LoadedMedia || media == QMediaPlayer::BufferedMedia ||
                            media == QMediaPlayer::BufferingMedia || media == QMediaPlayer::StalledMedia ||
                            media == QMediaPlayer::EndOfMedia;
        // For files that are no media, Qt reports a video without a size.
        const bool hasVideo =
            player_->hasVideo() && !player_->metaData().value(QMediaMetaData::Resolution).toSize().isEmpty();
        if (isOpen && !hasVideo && !player_->hasAudio()) return fail();
        const bool isPlaying = player_->playbackState() == QMediaPlayer::PlayingState;
        const std::lock_guard lock(report_->mutex);
        if (report_->status == AVPlayerStatus::failed) return;
        if (isOpen) report_->status = AVPlayerStatus::readyToPlay;
        report_->isMoving = isOpen && isPlaying && media != QMediaPlayer::StalledMedia;
        if (isOpen && player_->duration() > 0) report_->duration = player_->duration();
        if (!report_->isCurrent()) return;
        if (media == QMediaPlayer::EndOfMedia && !isPlaying) {
            report_->wantsPlay = false;
            report_->position = std::max<std::int64_t>(report_->duration, 0);
        } else {
            report_->position = player_->position();
        }
    }

    const QUrl url_;
    const std::shared_ptr<Report> report_;
    const std::shared_ptr<VideoPicture> picture_;
    QMediaPlayer* player_ = nullptr;
    QVideoSink* sink_ = nullptr;
};

QtPlayer::QtPlayer(const std::string& url)
    : picture_(std::make_shared<VideoPicture>()), report_(std::make_shared<Report>()) {
    worker_ = new Worker(QUrl(toQString(url)), report_, picture_);
    QThread* const thread = PlayerThreads::start();
    worker_->moveToThread(thread);
    QMetaObject::invokeMethod(worker_, [worker = worker_] { worker->open(); });
    // The main thread looks for an audio device, because Qt's list of devices belongs to it. Without a device the
    // player gets no audio output: an output without a device would stop the player's clock.
    if (QMediaDevices::defaultAudioOutput().isNull()) return;
    QMetaObject::invokeMethod(worker_, [worker = worker_] { worker->addSound(); });
}

QtPlayer::~QtPlayer() {
    picture_->hide();
    QThread* const thread = worker_->thread();
    QMetaObject::invokeMethod(worker_, [worker = worker_, thread] {
        worker->deleteLater();
        thread->quit();
    });
}

std::uint64_t QtPlayer::issue() {
    const std::lock_guard lock(report_->mutex);
    return ++report_->issued;
}

void QtPlayer::play() {
    {
        const std::lock_guard lock(report_->mutex);
        if (report_->status == AVPlayerStatus::failed) return;
        report_->wantsPlay = true;
    }
    const auto number = issue();
    QMetaObject::invokeMethod(
        worker_, [worker = worker_, number] { worker->perform(number, [](QMediaPlayer& player) { player.play(); }); });
}

void QtPlayer::pause() {
    {
        const std::lock_guard lock(report_->mutex);
        report_->wantsPlay = false;
    }
    const auto number = issue();
    QMetaObject::invokeMethod(worker_, [worker = worker_, number] {
        // At its end the player has stopped; a pause would start it from the beginning.
        worker->perform(number, [](QMediaPlayer& player) {
            if (player.mediaStatus() != QMediaPlayer::EndOfMedia) player.pause();
        });
    });
}

void QtPlayer::seekToTime(CMTime time) {
    std::int64_t position = 0;
    {
        const std::lock_guard lock(report_->mutex);
        const double wanted = std::max(0.0, time.seconds() * timeScale);
        const double end = report_->duration >= 0 ? double(report_->duration) : wanted;
        position = static_cast<std::int64_t>(std::min({wanted, end, 9e15}));
        report_->position = position;
    }
    const auto number = issue();
    QMetaObject::invokeMethod(worker_, [worker = worker_, number, position] {
        worker->perform(number, [position](QMediaPlayer& player) { player.setPosition(position); });
    });
}

AVPlayerStatus QtPlayer::status() const {
    const std::lock_guard lock(report_->mutex);
    return report_->status;
}

AVPlayerTimeControlStatus QtPlayer::timeControlStatus() const {
    const std::lock_guard lock(report_->mutex);
    if (!report_->wantsPlay) return AVPlayerTimeControlStatus::paused;
    return report_->isMoving ? AVPlayerTimeControlStatus::playing
                             : AVPlayerTimeControlStatus::waitingToPlayAtSpecifiedRate;
}

CMTime QtPlayer::duration() const {
    const std::lock_guard lock(report_->mutex);
    return report_->duration >= 0 ? CMTimeMake(report_->duration, timeScale) : CMTime{};
}

CMTime QtPlayer::currentTime() const {
    const std::lock_guard lock(report_->mutex);
    return CMTimeMake(report_->position, timeScale);
}

std::shared_ptr<PlayerEngine> QtPlayerFactory::makePlayer(const std::string& address) {
    if (!QCoreApplication::instance()) return nullptr;
    const QUrl url(toQString(address), QUrl::StrictMode);
    static const QStringList schemes{QStringLiteral("file"), QStringLiteral("http"), QStringLiteral("https")};
    if (!url.isValid() || !schemes.contains(url.scheme())) return nullptr;
    // Loads Qt's media plugin on the main thread, to which the plugin's global objects belong.
    static const bool isLoaded = QMediaPlayer().isAvailable();
    if (!isLoaded) return nullptr;
    return std::make_shared<QtPlayer>(address);
}

}  // namespace ostrel
