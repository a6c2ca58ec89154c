#pragma once

#include <QString>
#include <QStringView>
#include <optional>
#include <vector>

namespace qb {

/// An address in a text.
struct DetectedAddress {
    qsizetype Begin = 0;
    qsizetype Length = 0;
    friend bool operator==(const DetectedAddress&, const DetectedAddress&) = default;
};

/// The addresses of the web and of mailboxes that stand in a line of text as they are typed, with a scheme or "www.",
/// without what only ends the sentence around them. "local://Item17" is one too.
std::vector<DetectedAddress> AddressesIn(const QString& line);

/// What is opened for a text that was detected: with a scheme.
QString AddressToOpen(const QString& text);

} // namespace qb
