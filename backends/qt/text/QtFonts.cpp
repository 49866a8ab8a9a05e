#include "backends/qt/text/QtFonts.h"

#include <algorithm>
#include <QFontDatabase>
#include <QFontInfo>
#include <QStringList>

namespace ostrel {

namespace {

struct Families {
    QString text, monospace;
    // Families for characters that the first ones lack. Qt's own fallback shows boxes for scripts that its second
    // choice does not have.
    QStringList others;
    double pointsPerPixel = 0.75;
};

Families findFamilies() {
    Families families;
    for (const char* name : {"PingFang SC", "Noto Sans CJK SC", "Noto Sans SC", "Source Han Sans SC"}) {
        if (QFontDatabase::hasFamily(QLatin1String(name))) {
            families.text = QLatin1String(name);
            break;
        }
    }
    if (families.text.isEmpty()) families.text = QFontDatabase::systemFont(QFontDatabase::GeneralFont).family();
    for (const char* name : {"Courier New", "Noto Sans Mono", "DejaVu Sans Mono", "Noto Sans Mono CJK SC"}) {
        if (QFontDatabase::hasFamily(QLatin1String(name))) {
            families.monospace = QLatin1String(name);
            break;
        }
    }
    if (families.monospace.isEmpty()) {
        families.monospace = QFontDatabase::systemFont(QFontDatabase::FixedFont).family();
    }
    // Emoji in colour are preferred to black ones, so their families come first.
    for (const char* name : {"Apple Color Emoji", "Segoe UI Emoji", "Noto Color Emoji", "Noto Sans", "DejaVu Sans"}) {
        if (QFontDatabase::hasFamily(QLatin1String(name))) families.others.append(QLatin1String(name));
    }
    // QFont takes fractional sizes in points only; a font of 72 points (one inch) tells how many pixels an inch has
    // here.
    QFont probe;
    probe.setPointSizeF(72);
    const int pixels = QFontInfo(probe).pixelSize();
    if (pixels > 0) families.pointsPerPixel = 72.0 / pixels;
    return families;
}

const Families& families() {
    static const Families found = findFamilies();
    return found;
}

QFont::Weight weightOf(std::string_view name) {
    struct Suffix {
        std::string_view text;
        QFont::Weight weight;
    };
    static constexpr Suffix suffixes[] = {{"-Thin", QFont::Thin},     {"-Ultralight", QFont::ExtraLight},
                                          {"-Light", QFont::Light},   {"-Medium", QFont::Medium},
                                          {"-Semibold", QFont::Bold}, {"-Bold", QFont::Bold}};
    for (const Suffix& suffix : suffixes) {
        if (name.ends_with(suffix.text)) return suffix.weight;
    }
    return QFont::Normal;
}

}  // namespace

void prepareFonts() { families(); }

QFont qtFont(const UIFont& font, double scale) {
    const Families& found = families();
    const bool monospace = std::string_view(font.name).starts_with("Courier");
    QFont result(QStringList(monospace ? found.monospace : found.text) + found.others);
    const double pixels = std::clamp(font.pointSize * scale, 1.0, 2000.0);
    result.setPointSizeF(pixels * found.pointsPerPixel);
    result.setWeight(weightOf(font.name));
    result.setHintingPreference(QFont::PreferNoHinting);
    result.setStyleStrategy(QFont::StyleStrategy(QFont::PreferAntialias | QFont::NoSubpixelAntialias));
    return result;
}

}  // namespace ostrel
