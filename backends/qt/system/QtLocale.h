#pragma once

#include "platform/foundation/runloop/NSDate.h"

#include <QLocale>
#include <string>
#include <vector>

namespace ostrel {

/// Dates and languages as Qt reads them from the user's system (CLDR formats, the system's time zone).
class QtLocale final : public NSLocale {
public:
    /// `language`: a BCP 47 tag used instead of the system's language; empty: the system's.
    explicit QtLocale(const std::string& language = {});

    std::string shortDateAndTime(NSDate date) const override;
    std::vector<std::string> preferredLanguages() const override;

private:
    QLocale locale_;
};

}  // namespace ostrel
