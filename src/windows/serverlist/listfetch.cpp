// Fetching the web server list over the stream socket.
#include "probes/dssocket.h"
#include "serverlist/urltext.h"
#include "shell/frmpulsebox.h"
#include "shell/pulseboxmod.h"
#include "shell/prompts.h"
#include "shell/vblist.h"

#include <QComboBox>
#include <QLabel>

using namespace Qt::StringLiterals;

// Returns false when the URL has no host.
bool frmPulsebox::fetchPrepare(QString *host)
{
    lbHost->Clear();
    Mod().BytesReceived = 0;
    dsSocket1->LineMode = true;
    dsSocket1->EOLChar = 10;
    Mod().ListUrl = TrimSpaces(Text1->currentText());
    *host = UrlHost(Mod().ListUrl);
    return !host->isEmpty();
}

void frmPulsebox::fetchStart(const QString &host)
{
    dsSocket1->RemoteHost = host;
    dsSocket1->RemotePort = 80;
    Mod().FetchBusy = true;
    if (!dsSocket1->Connect()) {
        Seams::prompts().message(u"Error connecting to host"_s + u'\r'
                                     + QString::number(dsSocket1->LastError) + u':'
                                     + dsSocket1->LastErrorText,
                                 AppTitle);
    }
}

void frmPulsebox::dsSocket1_Connected() { setStatus(u"Connected..."_s); }

void frmPulsebox::dsSocket1_SendReady()
{
    inBody_ = false;
    setStatus(u"Ready to Send..."_s);
    lbHost->Clear();
    dsSocket1->Send(ListRequestText(UrlHost(Mod().ListUrl), UrlPath(Mod().ListUrl)));
}

void frmPulsebox::dsSocket1_DataArrival(const QString &line)
{
    if (!inBody_) {
        if (PrintableText(line).isEmpty())
            inBody_ = true;
        return;
    }
    lbHost->AddItem(TrimSpaces(PrintableText(line)));
    const int n = lbHost->ListCount();
    if (n % 10 == 0) {
        Label14->setText(QString::number(n));
        setStatus(u"Retreiving List...."_s + QString::number(n));
    }
    // A list far larger than any real one must not wrap the counter.
    Mod().BytesReceived = static_cast<qint32>(
        std::min<qint64>(qint64(Mod().BytesReceived) + line.size(), INT32_MAX));
}

void frmPulsebox::dsSocket1_Close()
{
    Mod().FetchBusy = false;
    setStatus(u"Connection closed..."_s + QString::number(Mod().BytesReceived) + u" bytes received."_s);
}

void frmPulsebox::dsSocket1_Error(int number, const QString &description)
{
    Mod().FetchBusy = false;
    setStatus(u"dsSocket1 Error : "_s + QString::number(number) + u':' + description);
}
