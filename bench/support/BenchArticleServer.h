#pragma once

#include <QProcess>
#include <QTemporaryDir>

#include <string>

namespace ostrel {

/// The article server as a child process on a temporary folder. The server ends with this object.
class BenchArticleServer final {
public:
    /// Starts the server and blocks until it listens. `arguments` go to the server after those of its port and folder.
    explicit BenchArticleServer(const QStringList& arguments = {});
    ~BenchArticleServer();

    /// "http://127.0.0.1:PORT/"; empty when it did not start.
    const QString& address() const { return address_; }
    const QTemporaryDir& folder() const { return data_; }

private:
    QTemporaryDir data_;
    QProcess process_;
    QString address_;
};

/// The path of a program that was built with this one.
QString besideThis(const char* program);

}  // namespace ostrel
