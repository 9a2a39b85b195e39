// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/UserDefaults.h"

#include "support/FakeUserDefaults.h"

#include <map>
#include <memory>
#include <string>

/// Other programs' settings in memory. What was opened goes on showing what the test changes.
class FakeUserDefaultsSuites final : public platform::UserDefaultsSuites {
    /// What is seen of a suite by those who opened it.
    class View final : public platform::UserDefaults {
        using Key = std::string_view;
        using Texts = std::vector<std::string>;

    public:
        explicit View(const FakeUserDefaults& of)
            : of_(of)
        {
        }
        [[nodiscard]] std::optional<bool> boolean(Key key) const override { return of_.boolean(key); }
        [[nodiscard]] std::optional<double> number(Key key) const override { return of_.number(key); }
        [[nodiscard]] std::optional<std::string> text(Key key) const override { return of_.text(key); }
        [[nodiscard]] std::optional<Texts> textArray(Key key) const override { return of_.textArray(key); }
        [[nodiscard]] std::optional<std::string> bytes(Key key) const override { return of_.bytes(key); }
        void setBoolean(Key, bool) override { }
        void setNumber(Key, double) override { }
        void setText(Key, std::string_view) override { }
        void setTextArray(Key, const Texts&) override { }
        void setBytes(Key, std::string_view) override { }
        void remove(Key) override { }

    private:
        const FakeUserDefaults& of_;
    };

public:
    [[nodiscard]] std::unique_ptr<const platform::UserDefaults> open(const std::string& suite) const override
    {
        if (closed)
            return nullptr;
        return std::make_unique<const View>(suites[suite]);
    }

    mutable std::map<std::string, FakeUserDefaults> suites;
    bool closed = false; ///< none can be opened
};
