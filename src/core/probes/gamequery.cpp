#include "probes/gamequery.h"

#include "probes/statusanswer.h"
#include "serverlist/urltext.h"

namespace GameQuery {

namespace {
const QString kHeader(4, QChar(0xFF));
const QString kCrLf = QStringLiteral("\r\n");
}

QString datagram(int queryMode)
{
    switch (queryMode) {
    case 1: return kHeader + QStringLiteral("info 31");
    case 2: return kHeader + QStringLiteral("info 32");
    case 3: return kHeader + QStringLiteral("info 33");
    case 4: return kHeader + QStringLiteral("info 34");
    case StatusMode: return kHeader + QStringLiteral("status");
    case PingMode: return kHeader + QStringLiteral("ping");
    default: return {};
    }
}

QString versionText(int queryMode)
{
    switch (queryMode) {
    case 1: return QStringLiteral("3.14");
    case 2: return QStringLiteral("3.15");
    case 3: return QStringLiteral("3.17");
    case 4: return QStringLiteral("3.19");
    case 5: return QStringLiteral("3.20");
    default: return QStringLiteral("unkn");
    }
}

bool isAck(const QString &answer)
{
    return answer == kHeader + QStringLiteral("ack") || answer == kHeader + QStringLiteral("ack\n");
}

bool isWrongVersion(const QString &answer)
{
    return answer.contains(QStringLiteral("wrong version"));
}

int nextMode(int mode, const QString &answer)
{
    return isWrongVersion(answer) && mode <= 4 ? mode + 1 : 0;
}

void FastVersionProbe::finish(int mode, const QString &answer)
{
    version_ = versionText(mode);
    infoLine_ = GameQuery::infoLine(answer);
    mode_ = 0;
}

void FastVersionProbe::answer(const QString &answer)
{
    if (mode_ == 0)
        return;
    if (mode_ == 4 && answer34_.isNull()) {
        const bool refused = isWrongVersion(answer);
        if (!answer.isEmpty() && (refused || !answer.contains(u'\n'))) {
            answer34_ = answer;
            mode_ = 1;
            return;
        }
        // Silence here ends the probe as silence to "info 31" ends the serial one.
        return finish(answer.isEmpty() ? 1 : 4, answer);
    }
    if (!isWrongVersion(answer))
        return finish(mode_, answer);
    if (mode_ < 3) {
        ++mode_;
        return;
    }
    // 31 to 33 refused: what 34 said decides, as in the serial order.
    if (isWrongVersion(answer34_))
        return finish(5, QString());
    finish(4, answer34_);
}

QString infoLine(const QString &answer)
{
    if (answer.isEmpty())
        return QStringLiteral("No data returned");
    const qsizetype lf = answer.indexOf(u'\n');
    if (lf < 0)
        return QStringLiteral("Malformed data returned");
    return PrintableText(answer.mid(lf + 1));
}

bool gaveInfo(const QString &line) { return line != infoLine(QString()); }

QString serverInfoText(const QString &answer)
{
    const StatusAnswer status = StatusAnswer::parse(answer);
    QString text = QStringLiteral("SERVER STATUS:") + kCrLf;
    for (qsizetype i = 0; i < status.serverFields.size(); ++i)
        text += i % 2 == 0 ? status.serverFields[i] : u'=' + status.serverFields[i] + kCrLf;
    QString players = status.playerText;
    return text + kCrLf + QStringLiteral("PLAYER STATUS:") + kCrLf + players.replace(u'\n', kCrLf);
}

}
