#include "ui/profile_editor/new_place_dialog.h"

#include "ui/theme/colours.h"
#include "ui/theme/qt_text.h"
#include "ui/theme/style.h"
#include "ui/theme/text_style.h"
#include "ui/theme/theme.h"
#include "ui/widgets/layouts.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/wrap_label.h"

#include <QHBoxLayout>
#include <QPainter>

#include <utility>

namespace zembrastel::ui {
namespace {

constexpr int dialogWidth = 460;
constexpr int margin = 24;
constexpr int rowInset = 5;    // of the focus ring
constexpr int markAt = 15;     // the radio button's left edge
constexpr int textAt = 44;     // the texts' left edge
constexpr int textMargin = 12; // above the texts
constexpr int spaceBelow = 9;
constexpr int markSide = 15;

// A radio button with an explanation below its title, as wide as the card.
class AnswerRow : public QRadioButton {
public:
    AnswerRow(const QString& title, QString explanation) : QRadioButton(title), note(std::move(explanation)) {
        setAccessibleDescription(note);
        const int width = scaledToText(dialogWidth - 2 * margin);
        const QRect inside = noteArea(QRect(0, 0, width, QWIDGETSIZE_MAX));
        const int lines = QFontMetrics(fontOf(TextStyle::small)).boundingRect(inside, Qt::TextWordWrap, note).height();
        setFixedHeight(inside.top() + lines + spaceBelow);
    }

protected:
    [[nodiscard]] bool hitButton(const QPoint& point) const override { return rect().contains(point); }

    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const Colours& now = colours();
        paintMark(painter, now);
        painter.setPen(now.text);
        painter.setFont(fontOf(TextStyle::strong));
        const int start = readingStart() | Qt::AlignTop;
        painter.drawText(mirrored(titleArea(rect())), start, text());
        painter.setPen(now.dim);
        painter.setFont(fontOf(TextStyle::small));
        painter.drawText(mirrored(noteArea(rect())), start | Qt::TextWordWrap, note);
        if (!hasFocus()) return;
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(now.focus, 2));
        painter.drawRoundedRect(QRectF(rect()).adjusted(rowInset, rowInset, -rowInset, -rowInset), 6, 6);
    }

private:
    void paintMark(QPainter& painter, const Colours& now) const {
        const QRectF mark = mirrored(QRect(markAt, textMargin, markSide, markSide));
        const bool on = isChecked();
        painter.setPen(on ? QPen(Qt::NoPen) : QPen(now.edge, 1.5));
        painter.setBrush(on ? now.accent : now.card);
        painter.drawEllipse(on ? mark : mark.adjusted(0.75, 0.75, -0.75, -0.75));
        if (!on) return;
        painter.setBrush(now.onAccent);
        painter.drawEllipse(mark.center(), 3, 3);
    }

    [[nodiscard]] static int titleHeight() { return QFontMetrics(fontOf(TextStyle::strong)).height(); }

    [[nodiscard]] static QRect titleArea(const QRect& row) {
        return {textAt, textMargin - 1, row.width() - textAt - rowInset, titleHeight()};
    }

    [[nodiscard]] static QRect noteArea(const QRect& row) {
        const QRect title = titleArea(row);
        return {textAt, title.bottom() + 3, title.width(), row.height() - title.bottom() - 3};
    }

    [[nodiscard]] QRect mirrored(QRect area) const {
        if (layoutDirection() == Qt::RightToLeft) area.moveRight(width() - 1 - area.left());
        return area;
    }

    QString note;
};

} // namespace

QString placeText(const Profile& profile, const Profile& other) {
    QString server = toQString(profile.host);
    if (profile.username != other.username) server.prepend(toQString(profile.username) + u'@');
    if (profile.port != other.port) server += u':' + QString::number(profile.port);
    //: %1 is a folder, %2 a server.
    return NewPlaceDialog::tr("%1 on %2").arg(onOneLine(toQString(profile.remoteFolder)), onOneLine(server));
}

NewPlaceDialog::NewPlaceDialog(
    const Profile& before, const Profile& now, std::size_t files, std::function<void(NewPlace)> answered,
    QWidget* parent)
    : QDialog(parent) {
    const int count = static_cast<int>(files);
    setWindowModality(Qt::WindowModal);
    auto* const layout = makeLayout<QVBoxLayout>(0, this);
    auto* const body = makeLayout<QVBoxLayout>(16);
    body->setContentsMargins(margin, margin, margin, 20);
    const QString known =
        count == 1 ? tr("Zembrastel knows one file as uploaded to %1. The profile now names %2.")
                   : tr("Zembrastel knows %n files as uploaded to %1. The profile now names %2.", nullptr, count);
    body->addLayout(makeHead(known.arg(placeText(before, now), placeText(now, before))));
    body->addWidget(makeRows(count));
    layout->addLayout(body, 1);
    auto* const cancel = new PushButton(tr("Cancel"));
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    auto* const save = new PushButton(tr("Save changes"), ButtonKind::primary);
    connect(save, &QPushButton::clicked, this, &QDialog::accept);
    layout->addWidget(makeSheetFoot({cancel, save}));
    save->setDefault(true); // takes effect only once the button is inside its dialog
    first->setFocus();
    connect(this, &QDialog::accepted, this, [this, answered = std::move(answered)] { answered(chosen); });
    const int width = scaledToText(dialogWidth);
    setFixedSize(width, layout->heightForWidth(width));
}

QLayout* NewPlaceDialog::makeHead(const QString& explanation) {
    const QString title = tr("What is in the new remote folder?");
    setWindowTitle(title);
    setAccessibleName(title);
    setAccessibleDescription(explanation);
    auto* const texts = makeLayout<QVBoxLayout>(6);
    texts->addWidget(new WrapLabel(title, TextStyle::confirmationTitle));
    texts->addWidget(new WrapLabel(explanation, TextStyle::body, Tone::dim));
    auto* const head = makeLayout<QHBoxLayout>(16);
    head->addWidget(new Tile("server", TileKind::soft, 44), 0, Qt::AlignTop);
    head->addLayout(texts, 1);
    return head;
}

QWidget* NewPlaceDialog::makeRows(int files) {
    QFrame* const card = makeSurface(Surface::card);
    auto* const rows = makeLayout<QVBoxLayout>(0, card);
    const auto add = [&](NewPlace answer, const QString& title, const QString& note) {
        if (first != nullptr) rows->addWidget(makeDivider(Qt::Horizontal));
        auto* const row = new AnswerRow(title, note);
        connect(row, &QRadioButton::toggled, this, [this, answer](bool on) {
            if (on) chosen = answer;
        });
        rows->addWidget(row);
        if (first == nullptr) first = row;
    };
    add(NewPlace::unknown, tr("Not sure"), tr("Compares names and sizes there, then asks what to upload."));
    add(NewPlace::sameFiles, tr("The same site, moved"),
        files == 1 ? tr("Takes the file as uploaded already.")
                   : tr("Takes all %n files as uploaded already.", nullptr, files));
    add(NewPlace::otherFiles, tr("Nothing, or something else"),
        files == 1 ? tr("Uploads the file. A file of the same name is replaced.")
                   : tr("Uploads all %n files. Files of the same name are replaced.", nullptr, files));
    first->setChecked(true);
    return card;
}

} // namespace zembrastel::ui
