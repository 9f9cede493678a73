#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions_2_1>
#include <QOpenGLVersionFunctionsFactory>

#include "meter/GlPreparation.h"
#include "meter/MeterCanvas.h"

namespace zemo {
namespace {

class GlMeterCanvas final : public MeterCanvas {
public:
    explicit GlMeterCanvas(std::unique_ptr<QOpenGLContext> context)
        : context_(std::move(context)) {}

    ~GlMeterCanvas() override {
        if (context_->makeCurrent(&surface_)) {
            buffer_.reset();
            context_->doneCurrent();
        }
    }

    bool open() {
        surface_.setFormat(context_->format());
        surface_.create();
        if (!surface_.isValid() || !context_->isValid() || !context_->makeCurrent(&surface_)) {
            return false;
        }
        gl_ = QOpenGLVersionFunctionsFactory::get<QOpenGLFunctions_2_1>(context_.get());
        const bool usable = gl_ != nullptr && gl_->initializeOpenGLFunctions() &&
                            QOpenGLFramebufferObject::hasOpenGLFramebufferObjects();
        context_->doneCurrent();
        return usable;
    }

    void begin(const QSize& pixels) override {
        context_->makeCurrent(&surface_);
        if (buffer_ == nullptr || buffer_->size() != pixels) {
            buffer_ = std::make_unique<QOpenGLFramebufferObject>(pixels);
        }
        buffer_->bind();
        gl_->glViewport(0, 0, pixels.width(), pixels.height());
        gl_->glEnable(GL_BLEND);
        // The picture is laid over the window later: its alpha must be that of what was drawn.
        gl_->glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE,
                                 GL_ONE_MINUS_SRC_ALPHA);
        gl_->glClearColor(0.0F, 0.0F, 0.0F, 0.0F);
        gl_->glClear(GL_COLOR_BUFFER_BIT);
    }

    void draw(const MeterQuad& quad) override {
        gl_->glBegin(GL_QUADS);
        setColour(quad.footColour);
        gl_->glVertex2f(MeterQuad::kLeft, quad.foot);
        gl_->glVertex2f(MeterQuad::kRight, quad.foot);
        setColour(quad.topColour);
        gl_->glVertex2f(MeterQuad::kRight, quad.top);
        gl_->glVertex2f(MeterQuad::kLeft, quad.top);
        gl_->glEnd();
    }

    QImage end() override {
        gl_->glFlush();
        QImage picture = buffer_->toImage();
        buffer_->release();
        context_->doneCurrent();
        return picture;
    }

private:
    void setColour(const MeterColour& colour) {
        gl_->glColor4f(colour.red, colour.green, colour.blue, colour.alpha);
    }

    QOffscreenSurface surface_;
    std::unique_ptr<QOpenGLContext> context_;
    QOpenGLFunctions_2_1* gl_ = nullptr;
    std::unique_ptr<QOpenGLFramebufferObject> buffer_;
};

} // namespace

std::unique_ptr<MeterCanvas> makeGlMeterCanvas() {
    auto context = GlPreparation::take();
    if (context == nullptr) {
        context = makeMeterContext();
    }
    auto canvas = std::make_unique<GlMeterCanvas>(std::move(context));
    return canvas->open() ? std::move(canvas) : nullptr;
}

} // namespace zemo
