#include "ui/theme/qt_text.h"

#include <QCoreApplication>
#include <QLocale>
namespace zembrastel::ui {
namespace {

bool turnsDirection(QChar character) {
    const auto code = character.unicode();
    const bool isMark = code == 0x061c || code == 0x200e || code == 0x200f;
    return isMark || (code >= 0x202a && code <= 0x202e) || (code >= 0x2066 && code <= 0x2069);
}

bool breaksLine(QChar character) {
    const auto category = character.category();
    return category == QChar::Other_Control || category == QChar::Separator_Line
           || category == QChar::Separator_Paragraph;
}

} // namespace

QString toQString(std::string_view utf8) { return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size())); }

QString sizeText(std::uint64_t bytes) {
    if (bytes == 1) return QCoreApplication::translate("FileSize", "1 byte");
    const int decimals = bytes < 1'000'000 ? 0 : 1;
    const auto size = QLocale().formattedDataSize(static_cast<qint64>(bytes), decimals, QLocale::DataSizeSIFormat);
    return QString(size).replace(u' ', QChar::Nbsp);
}

QString asToolTip(const QString& text) {
    return text.isEmpty() ? QString() : QStringLiteral("<span>%1</span>").arg(text.toHtmlEscaped());
}

QString onOneLine(const QString& text) {
    QString line;
    for (const QChar character : text) {
        if (!turnsDirection(character)) line += breaksLine(character) ? QChar(u' ') : character;
    }
    return line;
}

QString withoutMarkup(const QString& text) {
    constexpr QChar leftAngle(0x2039);
    constexpr QChar rightAngle(0x203a);
    constexpr QChar wideAmpersand(0xff06);
    return onOneLine(text).replace(u'<', leftAngle).replace(u'>', rightAngle).replace(u'&', wideAmpersand);
}

} // namespace zembrastel::ui
