#pragma once
// A standard web server on loopback for the list tests: Python's http.server
// serving a folder the test fills, over HTTP or over HTTPS with a throw-away
// certificate made here. A few paths misbehave on purpose: /loop redirects to
// itself, /mute never answers, /trickle sends a byte every 100 ms for ever,
// /chunked sends two entries chunked, /fail answers 503. Header only: the
// network and the window tests both use it.
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

class ListWebServer {
public:
    ~ListWebServer()
    {
        server_.kill();
        server_.waitForFinished(5000);
    }

    // Empty when the server runs; else why it cannot (the test skips).
    QString start(bool https = false)
    {
        const QString python = QStandardPaths::findExecutable(QStringLiteral("python3"));
        if (python.isEmpty())
            return QStringLiteral("python3 is not installed (scripts/setup.sh installs it)");
        QStringList arguments{QStringLiteral("-c"), QString::fromLatin1(kScript), dir_.path()};
        if (https) {
            const QString openssl = QStandardPaths::findExecutable(QStringLiteral("openssl"));
            if (openssl.isEmpty())
                return QStringLiteral("openssl is not installed (scripts/setup.sh installs it)");
            QProcess make;
            make.start(openssl, {QStringLiteral("req"), QStringLiteral("-x509"), QStringLiteral("-newkey"),
                                 QStringLiteral("rsa:2048"), QStringLiteral("-nodes"), QStringLiteral("-subj"),
                                 QStringLiteral("/CN=127.0.0.1"), QStringLiteral("-addext"),
                                 QStringLiteral("subjectAltName=IP:127.0.0.1"), QStringLiteral("-days"), QStringLiteral("1"),
                                 QStringLiteral("-keyout"), keyPath(), QStringLiteral("-out"), certificatePath()});
            if (!make.waitForFinished(30000) || make.exitCode() != 0)
                return QStringLiteral("openssl could not make a certificate: ") + QString::fromLocal8Bit(make.readAllStandardError());
            arguments << certificatePath() << keyPath();
        }
        scheme_ = https ? QStringLiteral("https") : QStringLiteral("http");
        server_.start(python, arguments);
        for (int i = 0; i < 100 && !server_.canReadLine() && server_.state() != QProcess::NotRunning; ++i)
            server_.waitForReadyRead(100);
        port_ = server_.readLine().trimmed().toUShort();
        return port_ ? QString() : QStringLiteral("python3's http.server did not start: ") + QString::fromLocal8Bit(server_.readAllStandardError());
    }

    QString url(const QString &path) const { return QStringLiteral("%1://127.0.0.1:%2/%3").arg(scheme_).arg(port_).arg(path); }
    bool put(const QString &name, const QByteArray &bytes)
    {
        QDir(dir_.path()).mkpath(QFileInfo(dir_.filePath(name)).path());
        QFile file(dir_.filePath(name));
        return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
    }
    QString certificatePath() const { return dir_.filePath(QStringLiteral("cert.pem")); }

private:
    QString keyPath() const { return dir_.filePath(QStringLiteral("key.pem")); }

    static constexpr const char *kScript = R"(
import http.server, ssl, sys, time, os
class Handler(http.server.SimpleHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    def log_message(self, *args): pass
    def do_GET(self):
        if self.path.startswith("/loop"):
            self.send_response(302); self.send_header("Location", "/loop"); self.send_header("Content-Length", "0")
            self.end_headers(); return
        if self.path.startswith("/mute"):
            time.sleep(60); return
        if self.path.startswith("/trickle"):
            self.send_response(200); self.send_header("Content-Length", "100000"); self.end_headers()
            for i in range(600):
                self.wfile.write(b"1"); self.wfile.flush(); time.sleep(0.1)
            return
        if self.path.startswith("/chunked"):
            self.send_response(200); self.send_header("Transfer-Encoding", "chunked"); self.end_headers()
            for line in (b"127.0.22.1:27910\n", b"127.0.22.2\n"):
                self.wfile.write(b"%x\r\n%s\r\n" % (len(line), line))
            self.wfile.write(b"0\r\n\r\n"); return
        if self.path.startswith("/fail"):
            self.send_error(503); return
        super().do_GET()
os.chdir(sys.argv[1])
server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
server.daemon_threads = True
if len(sys.argv) > 3:
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(sys.argv[2], sys.argv[3])
    server.socket = context.wrap_socket(server.socket, server_side=True)
print(server.server_address[1], flush=True)
server.serve_forever()
)";

    QTemporaryDir dir_;
    QProcess server_;
    QString scheme_ = QStringLiteral("http");
    quint16 port_ = 0;
};
