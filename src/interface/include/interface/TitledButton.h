#pragma once

#include <QColor>
#include <QFont>
#include <QPushButton>
#include <optional>

namespace zemo {

/// A title whose first characters have a colour of their own.
struct AttributedTitle {
    QString text{};
    QColor colour{};                            ///< of the first `colouredLength` characters
    int colouredLength = 0;                     ///< a length past the end means all of them
    std::optional<QFont> font{};                ///< the button's own when there is none
    Qt::Alignment alignment = Qt::AlignHCenter; ///< of the text within its own lines
};

/// A push button with a title and an alternate title, both with colours. [main]
class TitledButton : public QPushButton {
    Q_OBJECT
    Q_PROPERTY(QString title READ title WRITE setTitle)
    Q_PROPERTY(bool onLight READ isOnLight)
    Q_PROPERTY(QString alternateTitle READ alternateTitle WRITE setAlternateTitle)
public:
    explicit TitledButton(QWidget* parent = nullptr);

    QString title() const { return title_.text; }
    void setTitle(const QString& text); ///< plain, in the button's own font and colour
    const AttributedTitle& attributedTitle() const { return title_; }
    void setAttributedTitle(const AttributedTitle& title);

    /// Whether the title's colour is so dark that it is read better on a light ground. Style sheets
    /// see it as a property.
    bool isOnLight() const;

    QString alternateTitle() const { return alternateTitle_.text; }
    void setAlternateTitle(const QString& text);
    const AttributedTitle& attributedAlternateTitle() const { return alternateTitle_; }

    /// Where the title stands in the button.
    void setTitleAlignment(Qt::Alignment alignment);
    Qt::Alignment titleAlignment() const { return titleAlignment_; }

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    AttributedTitle title_;
    AttributedTitle alternateTitle_;
    Qt::Alignment titleAlignment_ = Qt::AlignHCenter;
};

} // namespace zemo
