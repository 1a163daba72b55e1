#pragma once

#include "Platform/Foundation/NSNotificationCenter.h"
#include "Quorvane/Completions/QVCompletionProvider.h"
#include "Quorvane/Packages/QVLoadable.h"
#include "Quorvane/Packages/QVPackage.h"
#include "Quorvane/Packages/QVPackageLock.h"
#include "Quorvane/Styles/QVStyle.h"
#include "Quorvane/Syntaxes/QVGrammar.h"
#include "Quorvane/Syntaxes/QVSyntax.h"
#include "Tests/Support/ParseFixture.h"
#include "Tests/Support/SyntaxText.h"

#include <future>

namespace quorvane::test {

/// A package put together by hand.
class TestPackage : public QVPackage {
public:
    explicit TestPackage(NSString identifier) : _identifier(std::move(identifier)) {}

    NSString identifier() const override { return _identifier; }
    std::map<NSString, std::shared_ptr<QVSyntax>> syntaxes() const override { return ownSyntaxes; }
    std::map<NSString, std::shared_ptr<QVCompletionSet>> completionSets() const override { return ownSets; }
    std::vector<std::shared_ptr<QVCompletionProvider>> completionProviders() const override {
        return ownProviders;
    }
    std::vector<std::shared_ptr<QVStyle>> styles() const override { return ownStyles; }
    std::vector<std::shared_ptr<QVTheme>> themes() const override { return ownThemes; }

    /// A new syntax under its name.
    std::shared_ptr<QVSyntax> addSyntax(std::string_view name, std::string_view elements = "") {
        auto syntax = syntaxFromXML(syntaxText(name, elements));
        ownSyntaxes[syntax->name()] = syntax;
        return syntax;
    }
    std::shared_ptr<QVCompletionProvider> addProvider(std::vector<NSString> syntaxNames) {
        ownProviders.push_back(std::make_shared<QVCompletionProvider>());
        ownProviders.back()->setSyntaxNames(std::move(syntaxNames));
        return ownProviders.back();
    }

    std::map<NSString, std::shared_ptr<QVSyntax>> ownSyntaxes;
    std::map<NSString, std::shared_ptr<QVCompletionSet>> ownSets;
    std::vector<std::shared_ptr<QVCompletionProvider>> ownProviders;
    std::vector<std::shared_ptr<QVStyle>> ownStyles;
    std::vector<std::shared_ptr<QVTheme>> ownThemes;

private:
    NSString _identifier;
};

inline std::shared_ptr<TestPackage> packageNamed(NSString identifier) {
    return std::make_shared<TestPackage>(std::move(identifier));
}

/// Loads packages, and unloads them when it goes.
class LoadedPackages {
public:
    explicit LoadedPackages(QVLoadable::Packages packages) : _packages(std::move(packages)) {
        QVLoadable::loadPackagesIntoSyntaxEngine(_packages);
    }
    ~LoadedPackages() { QVLoadable::unloadPackagesFromSyntaxEngine(_packages); }
    LoadedPackages(const LoadedPackages &) = delete;
    LoadedPackages &operator=(const LoadedPackages &) = delete;

private:
    QVLoadable::Packages _packages;
};

/// Keeps the notifications of loads and unloads, in order.
class PackageNotificationRecorder {
public:
    std::vector<NSNotification> notifications;

    std::vector<NSString> names() const {
        std::vector<NSString> result;
        for (const NSNotification &notification : notifications)
            result.push_back(notification.name);
        return result;
    }

private:
    NSNotificationToken observe(const char16_t *name) {
        return NSNotificationCenter::defaultCenter().addObserver(
            name, QVLoadable::notificationObject(),
            [this](const NSNotification &notification) { notifications.push_back(notification); });
    }

    NSNotificationToken _loads = observe(QVLoadableDidLoadPackagesNotification);
    NSNotificationToken _unloads = observe(QVLoadableWillUnloadPackagesNotification);
};

/// Whether another thread could read under the package lock at this moment.
inline bool anotherThreadMayRead() {
    return std::async(std::launch::async,
                      [] {
                          const ReadGuard guard(QVPackageLock(), std::try_to_lock);
                          return guard.owns_lock();
                      })
        .get();
}

} // namespace quorvane::test
