#include "backends/qt/system/QtLocale.h"

#include "backends/qt/system/QtConversions.h"

#include <cmath>
#include <QDateTime>

namespace ostrel {

QtLocale::QtLocale(const std::string& language)
    : locale_(language.empty() ? QLocale::system() : QLocale(toQString(language))) {}

std::string QtLocale::shortDateAndTime(NSDate date) const {
    // Only dates of the years 1 to 9999 are formatted. The comparison is written so that NaN fails it.
    if (!(date.secondsSince1970 > -62135596800.0 && date.secondsSince1970 < 253402300800.0)) return {};
    const QDateTime moment =
        QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(std::floor(date.secondsSince1970 * 1000)));
    return toUtf8(locale_.toString(moment, QLocale::ShortFormat));
}

std::vector<std::string> QtLocale::preferredLanguages() const {
    std::vector<std::string> tags;
    const QStringList languages = locale_.uiLanguages();
    for (const QString& language : languages) tags.push_back(toUtf8(language));
    if (tags.empty()) tags.emplace_back("en");
    return tags;
}

}  // namespace ostrel
