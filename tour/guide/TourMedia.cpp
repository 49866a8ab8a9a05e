#include "tour/guide/TourMedia.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>

#include <cmath>

namespace ostrel {

namespace {

struct Scene {
    const char* name;
    QSize size;
    QColor sky, horizon, land;
    /// The height of the sun: 0 at the horizon, 1 at the top.
    double sun;
};

/// A painted landscape: sky, sun and hills.
QImage painted(const Scene& scene) {
    QImage image(scene.size, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const double width = scene.size.width(), height = scene.size.height();
    QLinearGradient sky(0, 0, 0, height * 0.7);
    sky.setColorAt(0, scene.sky);
    sky.setColorAt(1, scene.horizon);
    painter.fillRect(image.rect(), sky);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(255, 244, 214));
    const double radius = std::min(width, height) * 0.09;
    painter.drawEllipse(QPointF(width * 0.62, height * (0.62 - 0.45 * scene.sun)), radius, radius);
    for (int hill = 0; hill < 3; ++hill) {
        QPolygonF ridge{{0, height}};
        const double base = height * (0.62 + 0.12 * hill);
        for (int x = 0; x <= 60; ++x) {
            const double at = x / 60.0 * 6.3;
            ridge << QPointF(width * x / 60, base + height * 0.05 * std::sin(at * (1 + 0.4 * hill) + 2.1 * hill));
        }
        ridge << QPointF(width, height);
        painter.setBrush(scene.land.darker(100 + 35 * hill));
        painter.drawPolygon(ridge);
    }
    return image;
}

/// Pickers show the newest file first: the ages give the pictures a fixed order.
bool setAge(const QString& path, int minutes) {
    QFile file(path);
    return file.open(QIODevice::ReadWrite) &&
           file.setFileTime(QDateTime::currentDateTime().addSecs(-60 * minutes), QFileDevice::FileModificationTime);
}

}  // namespace

bool makeTourMedia(const std::string& folder, const std::string& serverFolder) {
    const QDir root(QFile::decodeName(folder.c_str()));
    if (!root.mkpath("pictures/Holiday 2026") || !root.mkpath("videos")) return false;
    const Scene scenes[] = {
        {"Harbour at dusk.jpg", {1600, 1200}, {44, 54, 102}, {240, 140, 90}, {38, 50, 72}, 0.1},
        {"Noon 100%.jpg", {1200, 1600}, {70, 140, 220}, {200, 228, 250}, {70, 140, 90}, 0.9},
        {"Märkte & Straßen.png", {900, 900}, {120, 90, 160}, {250, 200, 190}, {120, 80, 110}, 0.4},
        {"Holiday 2026/雪.webp", {1400, 700}, {150, 175, 205}, {236, 242, 248}, {205, 215, 228}, 0.6},
        {"Holiday 2026/“Quoted”.jpeg", {800, 600}, {20, 70, 90}, {120, 190, 180}, {30, 90, 80}, 0.7},
        {"Thumb.jpg", {1, 1}, {200, 60, 60}, {200, 60, 60}, {200, 60, 60}, 0.5},
    };
    int age = 1;
    for (const Scene& scene : scenes) {
        const QString path = root.filePath("pictures/" + QString::fromUtf8(scene.name));
        if (!painted(scene).save(path, nullptr, 90) || !setAge(path, age++)) return false;
    }
    QFile damaged(root.filePath("pictures/Damaged.jpg"));
    if (!damaged.open(QIODevice::WriteOnly) || damaged.write("no picture") < 0) return false;
    damaged.close();
    if (!setAge(damaged.fileName(), age)) return false;

    const QString turned = root.filePath(QStringLiteral("videos/") + turnedClipName);
    if (!QFile::copy(":/tour/turned.mov", turned) ||
        !QFile::setPermissions(turned, QFile::ReadOwner | QFile::WriteOwner) || !setAge(turned, 0)) {
        return false;
    }
    int clips = 0;
    QDirIterator files(QFile::decodeName(serverFolder.c_str()), QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext() && clips < 4) {
        QFile file(files.next());
        if (!file.open(QIODevice::ReadOnly)) continue;
        // The first box of an MP4 file has this type (ISO/IEC 14496-12).
        if (file.peek(12).mid(4, 4) != "ftyp") continue;
        const QString copy = root.filePath(QStringLiteral("videos/Clip %1.mov").arg(++clips));
        if (!file.copy(copy) || !setAge(copy, clips)) return false;
    }
    return clips > 0;
}

}  // namespace ostrel
