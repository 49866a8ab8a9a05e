#pragma once

#include <QProcess>
#include <QTemporaryDir>

#include <string>

namespace ostrel {

/// The article server as a process of its own on a folder of its own, as long as this lives.
class BenchArticleServer final {
public:
    /// Waits until it listens. `arguments`: besides those that say where.
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
