// Fetching the web server list over the stream socket.
#include "probes/dssocket.h"
#include "serverlist/masterclient.h"
#include "serverlist/urltext.h"
#include "shell/waiting.h"
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
    listBody_ = ListBodyReader();
    setStatus(u"Ready to Send..."_s);
    lbHost->Clear();
    dsSocket1->Send(ListRequestText(UrlHost(Mod().ListUrl), UrlPath(Mod().ListUrl)));
}

void frmPulsebox::dsSocket1_DataArrival(const QString &line)
{
    QString entry;
    if (!listBody_.take(line, &entry))
        return;
    lbHost->AddItem(entry);
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

QString frmPulsebox::fetchFromMaster(const QString &host, quint16 port)
{
    lbHost->Clear();
    Mod().BytesReceived = 0;
    Mod().ListUrl = TrimSpaces(Text1->currentText());
    if (!master_)
        master_ = new MasterClient(this);
    master_->start(host, port);
    // The client ends by itself: on the master's silence after its answer, or at its time limit.
    waitUntil([this] { return !master_->isRunning(); });
    if (master_->isRunning()) {  // the program is ending
        master_->abort();
        return u"Cancelled"_s;
    }
    if (!master_->errorText().isEmpty())
        return master_->errorText();
    for (const QString &entry : master_->entries())
        lbHost->AddItem(entry);
    Mod().BytesReceived = static_cast<qint32>(std::min<qint64>(master_->counts().bytes, INT32_MAX));
    Label14->setText(QString::number(lbHost->ListCount()));
    setStatus(u"Master server answered: "_s + QString::number(lbHost->ListCount()) + u" servers, "_s
              + QString::number(Mod().BytesReceived) + u" bytes received."_s);
    return {};
}
