#include "reader/services/KeychainSessionStore.h"

#include "platform/foundation/runloop/NSLog.h"

#include <qt6keychain/keychain.h>

namespace ostrel {

namespace {
constexpr char service[] = "ostrel-reader";

void logFailure(const char* what, const QKeychain::Job& job) {
    if (job.error() == QKeychain::NoError || job.error() == QKeychain::EntryNotFound) return;
    NSLog("keychain: %@: %@", what, job.errorString().toStdString());
}
}  // namespace

KeychainSessionStore::KeychainSessionStore(const std::string& name) : key_(QString::fromStdString("session " + name)) {}

void KeychainSessionStore::load(LoadHandler handler) {
    auto* job = new QKeychain::ReadPasswordJob(service, this);
    job->setKey(key_);
    connect(job, &QKeychain::Job::finished, this, [job, handler = std::move(handler)](QKeychain::Job*) {
        logFailure("the session cannot be read", *job);
        handler(job->error() == QKeychain::NoError ? job->textData().toStdString() : std::string());
    });
    job->start();
}

void KeychainSessionStore::save(const std::string& cookieText) {
    auto* job = new QKeychain::WritePasswordJob(service, this);
    job->setKey(key_);
    job->setTextData(QString::fromStdString(cookieText));
    connect(job, &QKeychain::Job::finished, this, [job] { logFailure("the session cannot be kept", *job); });
    job->start();
}

void KeychainSessionStore::clear() {
    auto* job = new QKeychain::DeletePasswordJob(service, this);
    job->setKey(key_);
    connect(job, &QKeychain::Job::finished, this, [job] { logFailure("the session cannot be removed", *job); });
    job->start();
}

}  // namespace ostrel
