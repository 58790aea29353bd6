#pragma once
#include <QString>

// The game servers' connectionless text queries. Texts hold one character per
// byte (see WireText), so the four 0xFF bytes are the characters U+00FF.
namespace GameQuery {
constexpr int StatusMode = 99;
// "ping": every server family answers it at once with "ack", unlimited, so its round
// trip measures the path and not the server's work (used where ICMP is not allowed).
constexpr int PingMode = 98;

// The datagram that QueryMode selects: four 0xFF bytes and the query text, nothing
// after it; empty for a mode that sends nothing.
QString datagram(int queryMode);
// The game version that a version probe ending at QueryMode stands for.
QString versionText(int queryMode);
bool isWrongVersion(const QString &answer);
// The answer to PingMode: four 0xFF bytes and "ack", with or without a line feed.
bool isAck(const QString &answer);
// The info line of an info answer: "No data returned" when empty, "Malformed data
// returned" without a line feed, else the printable text after the first line feed.
QString infoLine(const QString &answer);
// The server gave an info line (its version probe heard something): infoLine is
// not "No data returned". Only such a server is asked for its players.
bool gaveInfo(const QString &infoLine);
// The serial version probe's step: the next QueryMode after `answer` came for
// `mode`, or 0 when the probe ends there (any answer but "wrong version", or
// the fifth round, which sends nothing).
int nextMode(int mode, const QString &answer);

// The probe engine's version probe: "info 34" first, since nearly every server
// speaks it, and the lower numbers in the serial order only when 34 is refused
// ("wrong version") or answered without a line feed (a server that answers
// everything alike, which the serial probe would have heard at "info 31").
// Silence to 34 ends the probe as silence to "info 31" ends the serial one.
// For a server that speaks one protocol, the version and info line equal the
// serial probe's; a server silent below 34 (q2pro) is heard.
class FastVersionProbe {
public:
    int mode() const { return mode_; }  // the QueryMode to send; 0 once done
    // Feeds the answer to the current mode (empty: silence within the time-out).
    void answer(const QString &answer);
    bool done() const { return mode_ == 0; }
    QString version() const { return version_; }
    QString infoLine() const { return infoLine_; }

private:
    void finish(int mode, const QString &answer);
    int mode_ = 4;
    QString answer34_;
    QString version_;
    QString infoLine_;
};

// The Server Info text: settings as key=value lines, then the player lines.
QString serverInfoText(const QString &answer);
}
