#pragma once
// Section names and keys that this library writes. The same texts are
// shared constants of the utility library; they are repeated here because
// this library cannot depend on it. Not installed.

#include <QString>
#include <QStringList>

namespace zoparser {

inline QString kCameraSystemInfo() { return QStringLiteral("Camera System Info"); }
inline QString kUserInput() { return QStringLiteral("User Input"); }
inline QString kAnalysisUserInput() { return QStringLiteral("Analysis User Input"); }
inline QString kUserLabelNameSet() { return QStringLiteral("User Label Name Set"); }
inline QString kClickNumber() { return QStringLiteral("ClickNumber"); }
inline QString kClickInfoType() { return QStringLiteral("ClickInfoType"); }
inline QString kSingleClick() { return QStringLiteral("SingleClick"); }
inline QString kClickInfoFormat() { return QStringLiteral("ClickInfo Format"); }
inline QString kCompleteClickNumber() { return QStringLiteral("Complete ClickNumber"); }
inline QString kAppVersion() { return QStringLiteral("Zolvane Version"); }
inline QString kSequence() { return QStringLiteral("Sequence"); }
inline QString kClickNumbersInSequence() { return QStringLiteral("ClickNumbers in Sequence"); }
inline QString kFileName() { return QStringLiteral("File Name"); }

// The labels of a new "User Input" section.
inline QStringList defaultUserLabels()
{
    return {QStringLiteral("User"), QStringLiteral("Group"), QStringLiteral("Experiment"),
            QStringLiteral("Comment1"), QStringLiteral("Comment2"), QStringLiteral("Time Point"),
            QStringLiteral("Animal Number"), QStringLiteral("Animal Strain"), QStringLiteral("Animal Model"),
            QStringLiteral("Sex"), QStringLiteral("View"), QStringLiteral("Cell Line"),
            QStringLiteral("Reporter"), QStringLiteral("Treatment"), QStringLiteral("Luc Injection Time"),
            QStringLiteral("IACUC Number")};
}

} // namespace zoparser
