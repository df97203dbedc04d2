// text.h: our texts, UTF-8, as the toolkit's.

#pragma once

#include <QString>

#include <string_view>

namespace orvanel {

inline QString to_qt(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace orvanel
