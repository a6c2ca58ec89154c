#pragma once

#include <QStringList>
#include <QTcpServer>
#include <QTcpSocket>

namespace qb::test {

/// A web server of this machine that gives one page and writes down what was asked for.
class CountingServer : public QTcpServer {
public:
    explicit CountingServer(QByteArray page = "page") : m_page(std::move(page))
    {
        listen(QHostAddress::LocalHost);
        connect(this, &QTcpServer::newConnection, this, [this] {
            ++Met;
            QTcpSocket* socket = nextPendingConnection();
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] { Answer(*socket); });
            connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        });
    }
    QByteArray Address() const { return "http://127.0.0.1:" + QByteArray::number(serverPort()) + "/"; }
    QStringList Asked; ///< paths
    int Met = 0;       ///< connections, with or without a question

private:
    void Answer(QTcpSocket& socket)
    {
        const QByteArray request = socket.readAll();
        Asked << QString::fromLatin1(request.mid(4, request.indexOf(' ', 4) - 4));
        socket.write("HTTP/1.0 200 OK\r\nContent-Length: " + QByteArray::number(m_page.size()) + "\r\n\r\n" + m_page);
        socket.disconnectFromHost();
    }
    QByteArray m_page;
};

} // namespace qb::test
