#pragma once

#include "platform/richtext/RichText.h"
#include "text/CTextFormat.h"

#include <QByteArray>
#include <QList>
#include <QString>

namespace qb {

/// The forms in which code is copied.
enum class CopyForm { Plain, Rtf, Html, Markdown };

/// What goes onto the clipboard: the text for programs that take no more, and its forms by their types.
struct CopiedText {
    struct Form {
        QString Type; ///< "text/html"
        QByteArray Bytes;
    };
    QString Plain;
    QList<Form> Forms;
};

/// What is copied of a text; all of it where nothing is selected.
struct CopiedRange {
    qsizetype Begin = 0;
    qsizetype Length = 0;
};

/// A code text, or what is selected of it, in a form. It is coloured by @p format, whose language @p language is; lines
/// end with a line feed, and nothing of the text is changed. HTML stands for itself, with its colours on a light
/// background; of HTML and Markdown a program that takes plain text gets the source.
CopiedText CopyOf(const RichTextDocument& code, CopiedRange range, CTextFormat& format, const QString& language,
                  CopyForm form);

} // namespace qb
