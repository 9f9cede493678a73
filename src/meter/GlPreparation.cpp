#include "meter/GlPreparation.h"

#include <QCoreApplication>
#include <QSurfaceFormat>

namespace zemo {
namespace {

constinit GlPreparation* current = nullptr;

/// An object may be given away only by the thread that it belongs to.
std::unique_ptr<QOpenGLContext> makeContextFor(QThread* user) {
    auto context = makeMeterContext();
    if (context->shareGroup() != nullptr) {
        context->shareGroup()->moveToThread(user);
    }
    context->moveToThread(user);
    return context;
}

} // namespace

GlPreparation::GlPreparation()
    : context_(
          std::async(std::launch::async, makeContextFor, QCoreApplication::instance()->thread())) {
    current = this;
}

GlPreparation::~GlPreparation() {
    current = nullptr;
}

std::unique_ptr<QOpenGLContext> GlPreparation::take() {
    return current != nullptr && current->context_.valid() ? current->context_.get() : nullptr;
}

std::unique_ptr<QOpenGLContext> makeMeterContext() {
    QSurfaceFormat format;
    format.setVersion(2, 1); // the last one that has immediate mode in every driver
    auto context = std::make_unique<QOpenGLContext>();
    context->setFormat(format);
    context->create();
    return context;
}

} // namespace zemo
