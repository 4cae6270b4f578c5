// Finds the texts of a screen that no translator has seen. Main thread.
#pragma once

#include <QSet>
#include <QTranslator>
#include <QWidget>

namespace zembrastel::screenshots {

// A language whose texts are the English ones in brackets.
class Brackets : public QTranslator {
public:
    [[nodiscard]] bool isEmpty() const override { return false; }
    [[nodiscard]] QString translate(
        const char* context, const char* source, const char* disambiguation, int number) const override;
};

// What a user reads or a screen reader announces on this screen without a bracket.
[[nodiscard]] QSet<QString> textsWithoutBrackets(const QWidget& screen);

} // namespace zembrastel::screenshots
