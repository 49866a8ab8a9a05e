#include "article/records/NSStringForDate.h"

#include "article/resources/ArticleBundles.h"
#include "platform/foundation/values/Text.h"

#include <cstdint>

namespace ostrel {

std::string NSStringForDate::date(NSDate date) {
    const double interval = NSDate::now().timeIntervalSinceDate(date);
    if (interval < 60.0) return articleText("just now");
    // The comparison comes before the conversion, because an interval of more than 64 bits has no integer.
    if (interval < 3600.0) return formatLong(articleText("%ld min ago"), static_cast<std::int64_t>(interval / 60.0));
    return NSLocale::current().shortDateAndTime(date);
}

}  // namespace ostrel
