#pragma once
// The user statistics log: one CSV file, "zouserstats.csv" in the application
// data folder, with a row per login and per logout:
//     Event,User,Time,Session Seconds
//     login,JD,2026-11-22T08:40:00,
//     logout,JD,2026-11-22T09:12:31,1951
// Rows are appended as they happen, so a crash loses at most the logout row.
// GUI thread; the functions are serialised all the same.

#include "zoutils_export.h"

#include <QString>

// Starts the statistics log: makes sure the file exists with its header line
// and can be appended to. Non-zero when it started, 0 when it did not.
ZOUTILS_EXPORT int beginUserStatLogging();
// Ends the current user's session (a logout row) and stops the log.
ZOUTILS_EXPORT void closeUserStatLogging();
// Called when `name` logs in: ends the previous user's session, if any, and
// starts one for `name`. Nothing happens when the log is not started or the
// name is empty or the same user is already logged in.
ZOUTILS_EXPORT void updateUserStats(const QString &name);
// The file of the statistics log (in the application data folder).
ZOUTILS_EXPORT QString userStatsFileName();
