#include "bench/support/BenchChild.h"

#include "bench/support/Bench.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QProcess>

#include <memory>

namespace ostrel {

namespace {

QString programPath() { return QFileInfo("/proc/self/exe").symLinkTarget(); }

class VirtualServer final {
public:
    VirtualServer() {
        process_.setProcessChannelMode(QProcess::SeparateChannels);
        process_.start("Xvfb", {"-displayfd", "1", "-screen", "0", "1280x1024x24", "-nolisten", "tcp"});
        if (process_.waitForStarted(5000) && process_.waitForReadyRead(10000)) {
            display_ = ":" + QString::fromLatin1(process_.readLine()).trimmed().toStdString();
        }
    }
    ~VirtualServer() {
        process_.terminate();
        if (!process_.waitForFinished(3000)) process_.kill();
    }
    const std::string& display() const { return display_; }

private:
    QProcess process_;
    std::string display_;
};

}  // namespace

std::string virtualDisplay() {
    static VirtualServer server;
    return server.display();
}

std::optional<double> childMeasure(BenchRenderer renderer, const std::vector<std::string>& arguments, int seconds) {
    QProcess child;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QSG_RENDER_LOOP", "basic");
    environment.insert("QT_SCALE_FACTOR", "1");
    if (renderer == BenchRenderer::software) {
        environment.insert("QT_QPA_PLATFORM", "offscreen");
        environment.insert("QT_QUICK_BACKEND", "software");
    } else {
        const std::string display = virtualDisplay();
        if (display.empty()) return std::nullopt;
        environment.insert("DISPLAY", QString::fromStdString(display));
        environment.insert("QT_QPA_PLATFORM", "xcb");
        environment.insert("QSG_RHI_BACKEND", "opengl");
        environment.insert("LIBGL_ALWAYS_SOFTWARE", "1");
        environment.remove("QT_QUICK_BACKEND");
    }
    child.setProcessEnvironment(environment);
    child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QStringList list{"--child"};
    for (const auto& argument : arguments) list << QString::fromStdString(argument);
    child.start(programPath(), list);
    if (!child.waitForFinished(seconds * 1000)) {
        child.kill();
        child.waitForFinished(2000);
        return std::nullopt;
    }
    if (child.exitStatus() != QProcess::NormalExit || child.exitCode() != 0) return std::nullopt;
    const QStringList lines = QString::fromUtf8(child.readAllStandardOutput()).trimmed().split('\n');
    bool isNumber = false;
    const double number = lines.back().toDouble(&isNumber);
    return isNumber ? std::optional(number) : std::nullopt;
}

int runBenchChild(const std::string& what, int argc, char** argv) {
    if (what == "scroll") return runScrollChild(argc, argv);
    if (what == "listview") return runListViewChild(argc, argv);
    if (what == "million") return runMillionChild(argc, argv);
    if (what == "insert") return runInsertChild(argc, argv);
    if (what == "startpeer") return runStartPeerChild(argc, argv);
    if (what == "answers") return runAnswersChild(argc, argv);
    if (what == "thumbnail") return runThumbnailChild(argc, argv);
    if (what == "videofirst") return runVideoFirstChild(argc, argv);
    if (what == "videoplay") return runVideoPlayChild(argc, argv);
    if (what == "detail") return runDetailChild(argc, argv);
    if (what == "upload") return runUploadChild(argc, argv);
    if (what == "editor") return runEditorChild(argc, argv);
    if (what == "typing") return runTypingChild(argc, argv);
    if (what == "save") return runSaveChild(argc, argv);
    return 2;
}

}  // namespace ostrel
