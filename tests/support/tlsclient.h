// tlsclient.h: a TLS connection to a port of this machine, over the operations of the crypto proxy and a pair
// of buffers whose other end this class moves to and from a socket.
#ifndef TVXCMN_TESTS_TLSCLIENT_H
#define TVXCMN_TESTS_TLSCLIENT_H

#include "opensslproxy.h"

#include <arpa/inet.h>
#include <climits>
#include <netinet/in.h>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

class TlsClientC {
public:
    TlsClientC(OpenSSLProxyI& crypto, ssl_ctx_st* settings, int port)
        : m_crypto(crypto), m_ssl(crypto.SSL_new(settings)), m_socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        bio_st* inside = nullptr;
        m_crypto.BIO_new_bio_pair(&inside, 0, &m_network, 0);
        m_crypto.SSL_set_bio(m_ssl, inside, inside);
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (::connect(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) perror("connect");
    }
    ~TlsClientC()
    {
        m_crypto.SSL_free(m_ssl);
        m_crypto.BIO_free(m_network);
        close(m_socket);
    }
    TlsClientC(const TlsClientC&) = delete;
    TlsClientC& operator=(const TlsClientC&) = delete;

    ssl_st* ssl() { return m_ssl; }
    bool connect()
    {
        return drive([&] { return m_crypto.SSL_connect(m_ssl); }) == 1;
    }
    void write(const std::string& text)
    {
        drive([&] { return m_crypto.SSL_write(m_ssl, text.data(), static_cast<int>(text.size())); });
    }
    std::string readLine()
    {
        std::string line;
        char c = 0;
        while (c != '\n' && drive([&] { return m_crypto.SSL_read(m_ssl, &c, 1); }) == 1) line += c;
        return line;
    }

private:
    // Repeats an operation until it is through, or fails for another reason than missing bytes.
    template <class OperationT>
    int drive(OperationT operation)
    {
        const int WANT_READ = 2;
        for (;;) {
            const int result = operation();
            const int reason = result > 0 ? 0 : m_crypto.SSL_get_error(m_ssl, result);
            send();
            if (reason != WANT_READ || !receive()) return result;
        }
    }
    void send()
    {
        char* bytes = nullptr;
        for (int size; (size = m_crypto.BIO_nread(m_network, &bytes, INT_MAX)) > 0;) {
            if (::send(m_socket, bytes, static_cast<size_t>(size), MSG_NOSIGNAL) != size) return;
        }
    }
    bool receive()
    {
        char* room = nullptr;
        const int size = m_crypto.BIO_nwrite0(m_network, &room);
        const ssize_t got = recv(m_socket, room, static_cast<size_t>(size), 0);
        return got > 0 && m_crypto.BIO_nwrite(m_network, &room, static_cast<int>(got)) == got;
    }

    OpenSSLProxyI& m_crypto;
    ssl_st* const m_ssl;
    bio_st* m_network = nullptr;
    const int m_socket;
};

#endif   // TVXCMN_TESTS_TLSCLIENT_H
