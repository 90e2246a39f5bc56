#include "QtYardstick.h"

#include <QCoreApplication>
#include <QMutex>
#include <QObject>
#include <QThread>
#include <QUndoCommand>
#include <QUndoStack>
#include <QVariant>
#include <QWaitCondition>

namespace kv::bench {

class Sender : public QObject {
    Q_OBJECT
    Q_PROPERTY(int tag READ Tag WRITE SetTag NOTIFY TagChanged)

public:
    int Tag() const { return m_tag; }
    void SetTag(int tag)
    {
        m_tag = tag;
        emit TagChanged(1, tag);
    }

signals:
    void TagChanged(int id, int tag);

private:
    int m_tag = 0;
};

class Receiver : public QObject {
    Q_OBJECT

public slots:
    void Heard(int, int)
    {
        const QMutexLocker lock(&m_mutex);
        if (++m_count == m_awaited) m_arrived.wakeOne();
    }

public:
    void WaitFor(std::size_t count)
    {
        const QMutexLocker lock(&m_mutex);
        m_awaited = count;
        while (m_count < count)
            m_arrived.wait(&m_mutex);
    }

private:
    QMutex m_mutex;
    QWaitCondition m_arrived;
    std::size_t m_count = 0;
    std::size_t m_awaited = 0;
};

class QtYardstick::Parts {
public:
    Parts()
    {
        static int argc = 1;
        static char name[] = "kv_bench";
        static char* argv[] = {name, nullptr};
        if (!QCoreApplication::instance()) static QCoreApplication application(argc, argv);
        receiver.moveToThread(&thread);
        QObject::connect(&sender, &Sender::TagChanged, &receiver, &Receiver::Heard, Qt::QueuedConnection);
        thread.start();
    }
    ~Parts()
    {
        thread.quit();
        thread.wait();
    }

    Sender sender;
    Receiver receiver;
    QThread thread;
    std::size_t sent = 0;
};

QtYardstick::QtYardstick() : m_parts(std::make_unique<Parts>()) {}
QtYardstick::~QtYardstick() = default;

void QtYardstick::SetProperty(std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        m_parts->sender.setProperty("tag", QVariant(static_cast<int>(++m_parts->sent)));
}

void QtYardstick::WaitForAll()
{
    m_parts->receiver.WaitFor(m_parts->sent);
}

class TextCommand : public QUndoCommand {
public:
    TextCommand(QString& text, QString after)
        : QUndoCommand(QStringLiteral("rename")), m_text(text), m_before(text), m_after(std::move(after))
    {
    }

    void undo() override { m_text = m_before; }
    void redo() override { m_text = m_after; }

private:
    QString& m_text;
    const QString m_before;
    const QString m_after;
};

class QtUndoStack::Parts {
public:
    QString text;
    QUndoStack stack;
};

QtUndoStack::QtUndoStack() : m_parts(std::make_unique<Parts>()) {}
QtUndoStack::~QtUndoStack() = default;

void QtUndoStack::Push(std::u16string_view text)
{
    m_parts->stack.push(new TextCommand(
        m_parts->text, QString(reinterpret_cast<const QChar*>(text.data()), static_cast<qsizetype>(text.size()))));
}

void QtUndoStack::Undo()
{
    m_parts->stack.undo();
}

void QtUndoStack::Redo()
{
    m_parts->stack.redo();
}

void QtUndoStack::Clear()
{
    m_parts->stack.clear();
}

} // namespace kv::bench

#include "QtYardstick.moc"
