#pragma once

/// What every program of ours sets up before anything else, the application object included.
///
/// Qt takes the names of files, arguments and what it prints to be bytes as they are (see
/// bytetext.h) where the locale's text is UTF-8 or, as in the locale "C", ASCII. Locales with a
/// table of their own, KOI8-R say, keep it: it has every byte. A file that may not grow any
/// more, by a limit on its size, makes writing fail like a full disk instead of ending the
/// program. Qt's calendar is used once, for it makes its tables on first use, and not safely where
/// several threads do so at once.
void setUpProcess();
