#include "backends/qt/window/QtTransfer.h"

#include "backends/qt/system/QtConversions.h"
#include "backends/qt/window/QtWindowView.h"
#include "platform/foundation/runloop/NSThread.h"
#include "platform/uikit/view/UIWindow.h"

#include <cstring>
#include <QApplication>
#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QImage>
#include <QImageReader>
#include <QMimeData>
#include <QQuickWindow>
#include <QStandardPaths>
#include <QUrl>
#include <QWindow>
#include <utility>

namespace ostrel {

namespace {

// The quality that Qt maps to fast compression. Compressing a picture of the whole screen well takes a second, and
// nobody gains from the smaller size.
constexpr int quickCompression = 80;

Data encodedPicture(const QImage& picture) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (picture.isNull() || !picture.save(&buffer, "PNG", quickCompression)) return {};
    return Data::take(bytes.toStdString());
}

}  // namespace

UITransferItems transferItems(const QMimeData* data) {
    UITransferItems items;
    if (!data) return items;
    for (const QUrl& url : data->urls()) {
        // Names of files are bytes for the system, not Unicode.
        if (url.isLocalFile()) items.filePaths.push_back(QFile::encodeName(url.toLocalFile()).toStdString());
    }
    items.hasPicture = data->hasImage();
    return items;
}

void transferItemsWithPicture(const QMimeData* data, std::function<void(UITransferItems)> handler) {
    UITransferItems items = transferItems(data);
    const auto deliver = [](UITransferItems ready, std::function<void(UITransferItems)> to) {
        RunLoop::main().perform([ready = std::move(ready), to = std::move(to)]() mutable { to(std::move(ready)); });
    };
    if (!items.hasPicture || !items.filePaths.empty()) return deliver(std::move(items), std::move(handler));
    for (const char* const type : {"image/png", "image/jpeg"}) {
        const QByteArray bytes = data->data(QString::fromLatin1(type));
        if (bytes.isEmpty()) continue;
        items.picture = Data::take(bytes.toStdString());
        return deliver(std::move(items), std::move(handler));
    }
    NSThread::detachNewThread([picture = qvariant_cast<QImage>(data->imageData()), items = std::move(items),
                               handler = std::move(handler), deliver]() mutable {
        items.picture = encodedPicture(picture);
        if (RunLoop::hasMain()) deliver(std::move(items), std::move(handler));
    });
}

bool canChooseFiles() { return qobject_cast<QApplication*>(QCoreApplication::instance()) != nullptr; }

void chooseFiles(UIWindow* window, const UIFileRequest& request,
                 std::function<void(std::vector<std::string>)> handler) {
    auto* const dialog = new QFileDialog(nullptr, toQString(request.title));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->setOption(QFileDialog::HideNameFilterDetails);
    // The folder of the last file that was chosen.
    static QString folder = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    if (QDir(folder).exists()) dialog->setDirectory(folder);
    if (!request.extensions.empty()) {
        QStringList patterns;
        for (const std::string& extension : request.extensions) {
            // Qt's patterns are case-sensitive where names of files are, so both cases are listed.
            patterns << QStringLiteral("*.") + toQString(extension)
                     << QStringLiteral("*.") + toQString(extension).toUpper();
        }
        dialog->setNameFilters(
            {toQString(request.kindName) + QStringLiteral(" (") + patterns.join(QLatin1Char(' ')) + QLatin1Char(')'),
             QFileDialog::tr("All Files (*)")});
    }
    QObject::connect(dialog, &QDialog::finished, dialog, [dialog, handler = std::move(handler)](int result) {
        std::vector<std::string> paths;
        if (result == QDialog::Accepted) {
            for (const QString& path : dialog->selectedFiles()) paths.push_back(QFile::encodeName(path).toStdString());
            folder = dialog->directory().absolutePath();
        }
        handler(std::move(paths));
    });
    const auto* const view = window ? dynamic_cast<QtWindowView*>(window->backend()) : nullptr;
    dialog->setWindowModality(view ? Qt::WindowModal : Qt::ApplicationModal);
    dialog->winId();
    if (view && view->window() && dialog->windowHandle()) dialog->windowHandle()->setTransientParent(view->window());
    dialog->open();
}

std::shared_ptr<const CGImage> decodeWithQt(const Data& data) {
    QByteArray bytes = QByteArray::fromRawData(data.view().data(), static_cast<qsizetype>(data.size()));
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    QImage picture = reader.read();
    if (picture.isNull()) return nullptr;
    picture.convertTo(QImage::Format_RGBA8888_Premultiplied);
    auto result = picture.isNull() ? nullptr : CGImage::make(picture.width(), picture.height());
    for (int y = 0; result && y < picture.height(); ++y)
        std::memcpy(result->row(y), picture.constScanLine(y), result->bytesPerRow());
    return result;
}

}  // namespace ostrel
