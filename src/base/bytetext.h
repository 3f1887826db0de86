#pragma once

#include <QByteArray>
#include <QString>

/// Names of files are bytes, and not all of them are UTF-8: a name that was typed on an older
/// machine may be KOI8-R. These functions keep every byte.

/// Text of bytes: what is UTF-8 becomes its characters, every other byte 0x80 to 0xFF the single
/// code unit U+DC80 to U+DCFF, which no UTF-8 text holds.
QString textOfBytes(const QByteArray &bytes);

/// The bytes that such a text was made of; of any other text its UTF-8.
QByteArray bytesOfText(const QString &text);

/// Whether a code unit of a text stands for a byte that is not UTF-8.
bool isLoneByte(const QString &text, int index);
