#ifndef VANTIXCONTROL_WORDS_H
#define VANTIXCONTROL_WORDS_H

#include <vantix/vantix_export.h>

#include <QString>
#include <QStringList>

namespace VantixControl {

/**
 * How a console line is cut into words, and how a word is written so that
 * it comes back as it was: the engine splits with splitWords(), and every
 * client builds lines with quote() and join(), so the two never
 * disagree.
 *
 * Words are separated by blanks (any QChar::isSpace()). A double-quoted
 * word keeps its blanks and may be empty (""); inside the quotes a backslash
 * escapes: \n, \r and \t are a line feed, a carriage return and a tab,
 * \uXXXX is that UTF-16 code unit, and any other character after a
 * backslash stands for itself (\" and \\). Outside quotes a backslash is an
 * ordinary character.
 */
namespace Words {

/// The words of @p line; false with the reason when a quote is not closed or an escape is cut short.
VANTIX_EXPORT bool split(const QString &line, QStringList *words, QString *error);
/**
 * @p word as one word of a line: unchanged when it needs nothing, else in
 * double quotes with escapes. The result is always one line of printable
 * text: line breaks and other blanks than the space are escaped.
 */
VANTIX_EXPORT QString quote(const QString &word);
/**
 * @p text as it stands between the quotes of a quoted word: " and \
 * escaped, and every character that could end a line or that a reader
 * would not see written as \n, \r, \t or \uXXXX. Always one line.
 */
VANTIX_EXPORT QString escape(const QString &text);
/**
 * @p text for a reader, on one line: what escape() writes for line breaks,
 * other blanks than the space and invisible characters, everything else
 * (quotes and backslashes too) as it is. For comments and messages.
 */
VANTIX_EXPORT QString printable(const QString &text);
/// The words quoted and joined by spaces: a line that split() gives back as @p words.
VANTIX_EXPORT QString join(const QStringList &words);

} // namespace Words
} // namespace VantixControl

#endif
