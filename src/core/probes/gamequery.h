#pragma once
#include <QString>

// The game servers' connectionless text queries. Texts hold one character per
// byte (see WireText), so the four 0xFF bytes are the characters U+00FF.
namespace GameQuery {
constexpr int StatusMode = 99;

// The datagram that QueryMode selects: four 0xFF bytes and the query text, nothing
// after it; empty for a mode that sends nothing.
QString datagram(int queryMode);
// The game version that a version probe ending at QueryMode stands for.
QString versionText(int queryMode);
bool isWrongVersion(const QString &answer);
// The info line of an info answer: "No data returned" when empty, "Malformed data
// returned" without a line feed, else the printable text after the first line feed.
QString infoLine(const QString &answer);
// The Server Info text: settings as key=value lines, then the player lines.
QString serverInfoText(const QString &answer);
}
