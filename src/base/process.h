#pragma once

/// What every program of ours sets up before anything else, the application object included.
///
/// Qt takes the names of files, arguments and what it prints to be bytes as they are (see
/// bytetext.h) where the locale's text is UTF-8 or, as in the locale "C", ASCII. Locales with a
/// table of their own, KOI8-R say, keep it: it has every byte. A file that may not grow any
/// more, by a limit on its size, makes writing fail like a full disk instead of ending the
/// program. It calls setUpDates().
void setUpProcess();

/// Uses Qt's calendar, which makes its tables on first use, and not safely where several threads do
/// so at once: dates that they read come out invalid then. Called before threads that read dates.
void setUpDates();
