#include "backends/qt/QtPlatform.h"

#include "backends/qt/system/QtConversions.h"
#include "backends/qt/system/QtLocale.h"
#include "backends/qt/system/QtRunLoop.h"
#include "backends/qt/text/QtFonts.h"
#include "backends/qt/text/QtTextMeasurer.h"
#include "backends/qt/video/QtPlayer.h"
#include "backends/qt/window/QtAccessibility.h"
#include "backends/qt/window/QtTransfer.h"
#include "platform/graphics/ImageDecoder.h"
#include "platform/uikit/view/UIDevice.h"
#include "platform/uikit/view/UIView.h"

#include <cassert>
#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QSettings>
#include <QStandardPaths>
#include <QUrl>
#include <utility>

namespace ostrel {

namespace {

/// The desktop's own setting for reduced motion, as far as files tell it: GTK's settings file, which most desktops
/// write, and KDE's animation factor.
bool systemReducesMotion() {
    const QString gtk =
        QStandardPaths::locate(QStandardPaths::GenericConfigLocation, QStringLiteral("gtk-4.0/settings.ini"));
    if (!gtk.isEmpty()) {
        const QSettings settings(gtk, QSettings::IniFormat);
        const QVariant animations = settings.value(QStringLiteral("Settings/gtk-enable-animations"));
        if (animations.isValid() && !animations.toBool()) return true;
    }
    const QString kde = QStandardPaths::locate(QStandardPaths::GenericConfigLocation, QStringLiteral("kdeglobals"));
    if (!kde.isEmpty()) {
        const QSettings settings(kde, QSettings::IniFormat);
        const QVariant factor = settings.value(QStringLiteral("KDE/AnimationDurationFactor"));
        if (factor.isValid() && factor.toDouble() == 0) return true;
    }
    return false;
}

bool reducesMotion() {
    const QByteArray wanted = qgetenv("OSTREL_REDUCE_MOTION");
    return wanted.isEmpty() ? systemReducesMotion() : wanted != "0";
}

/// Opens web and mail addresses only: an article must not be able to open a file or start a program of this machine.
bool openAddress(const std::string& address) {
    const QUrl url(toQString(address), QUrl::StrictMode);
    static const QStringList schemes{QStringLiteral("http"), QStringLiteral("https"), QStringLiteral("mailto")};
    return url.isValid() && schemes.contains(url.scheme()) && QDesktopServices::openUrl(url);
}

}  // namespace

void QtPlatform::install(const Options& options) {
    assert(qGuiApp);
    // Qt reads the variable when the first player is made. Of Qt's media backends only this one plays without a display
    // and turns frames upright.
    if (qEnvironmentVariableIsEmpty("QT_MEDIA_BACKEND")) qputenv("QT_MEDIA_BACKEND", "ffmpeg");
    // Qt's FFmpeg backend lists every decoder that it does not find, in the category of the application's own messages.
    if (qEnvironmentVariableIsEmpty("QT_LOGGING_RULES"))
        QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, false);
    PlayerFactory::install(std::make_shared<QtPlayerFactory>());
    RunLoop::installMain(std::make_shared<QtRunLoop>());
    prepareFonts();
    TextMeasurer::install(std::make_shared<QtTextMeasurer>());
    NSLocale::install(std::make_shared<QtLocale>(options.language));
    installAccessibility();
    UIView::setReduceMotionEnabled(reducesMotion());
    UIApplication& application = UIApplication::sharedApplication();
    application.openURL = openAddress;
    application.setPasteboardText = [](const std::string& text) {
        if (QClipboard* clipboard = QGuiApplication::clipboard()) clipboard->setText(toQString(text));
    };
    application.readPasteboard = [](std::function<void(UITransferItems)> handler) {
        QClipboard* const clipboard = QGuiApplication::clipboard();
        transferItemsWithPicture(clipboard ? clipboard->mimeData() : nullptr, std::move(handler));
    };
    application.chooseFiles = nullptr;
    if (canChooseFiles()) application.chooseFiles = chooseFiles;
    installImageDecoder(decodeWithQt);
}

}  // namespace ostrel
