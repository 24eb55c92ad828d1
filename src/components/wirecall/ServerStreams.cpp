#include "components/wirecall/ServerStreams.h"

#include "components/wirecall/StreamMessages.h"

#include <exception>
#include <stdexcept>
#include <utility>

namespace wirecall {

using google::protobuf::Message;

namespace {

StreamCall& streamCall(google::protobuf::RpcController* controller)
{
    auto* call = dynamic_cast<StreamCall*>(controller);
    if (call == nullptr)
        throw std::logic_error("this is no call of a server");
    return *call;
}

} // namespace

void sendStream(google::protobuf::RpcController* call, std::unique_ptr<StreamSource> source)
{
    streamCall(call).give(std::move(source));
}

void receiveStream(google::protobuf::RpcController* call, std::unique_ptr<StreamSink> sink)
{
    streamCall(call).give(std::move(sink));
}

void wakeStream(google::protobuf::RpcController* call)
{
    streamCall(call).wake();
}

OutgoingStream::OutgoingStream(StreamCall& call, std::unique_ptr<StreamSource> source, Message& head)
    : m_Call(call), m_Source(std::move(source)), m_Head(head)
{
}

void OutgoingStream::work()
{
    std::unique_lock<std::mutex> lock(m_Mutex);
    while (!m_Preparing) {
        if (m_IsPrepared && !m_Sending) {
            grpc::ByteBuffer message;
            message.Swap(&m_Next);
            m_IsPrepared = false;
            m_Sending = true;
            m_Call.send(message);
        }
        if (m_IsPrepared || (m_AtEnd && m_Sending) || (!m_AtEnd && m_Source->isWaiting()))
            return;
        m_Preparing = true; // for ever when the call ends, so that it ends once
        const bool atEnd = m_AtEnd;
        lock.unlock();
        if (atEnd) {
            m_Source.reset();
            return m_Call.end(false);
        }
        grpc::ByteBuffer message;
        const bool prepared = prepare(message);
        lock.lock();
        m_Preparing = false;
        m_AtEnd = m_AtEnd || !prepared;
        m_IsPrepared = !m_AtEnd;
        if (m_IsPrepared)
            m_Next.Swap(&message);
    }
}

bool OutgoingStream::prepare(grpc::ByteBuffer& message)
{
    try {
        OutgoingBuffer data;
        m_Head.Clear();
        if (!m_Source->next(data))
            return false;
        message = assemble(m_Head, std::move(data));
        return true;
    } catch (const std::exception& exception) {
        m_Call.setFailed(exception.what());
        return false;
    }
}

void OutgoingStream::stepEnded(bool ok)
{
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_Sending = false;
        if (!ok) {
            m_AtEnd = true;
            m_IsPrepared = false;
        }
    }
    work();
}

IncomingStream::IncomingStream(StreamCall& call, std::unique_ptr<StreamSink> sink, Message& head,
                               const grpc::ByteBuffer& first)
    : m_Call(call), m_Sink(std::move(sink)), m_Head(head), m_Next(first)
{
}

void IncomingStream::work()
{
    std::unique_lock<std::mutex> lock(m_Mutex);
    while (!m_Taking) {
        const bool over = m_Over;
        const bool arrived = m_HasArrived;
        if (over ? m_Confirming : !arrived && !m_AllCame)
            return;
        m_Taking = true; // for ever when the call ends, so that it ends once
        grpc::ByteBuffer message;
        if (arrived && !over) {
            message.Swap(&m_Next);
            m_HasArrived = false;
            m_Call.receive(m_Next);
        }
        lock.unlock();
        if (over) {
            m_Sink.reset();
            return m_Call.end(true);
        }
        const bool goesOn = arrived ? take(message) : finish();
        lock.lock();
        m_Taking = false;
        m_Over = m_Over || !goesOn;
    }
}

bool IncomingStream::take(const grpc::ByteBuffer& message)
{
    try {
        Payload data;
        if (takeApart(message, m_Head, data))
            return m_Sink->take(data);
        m_Call.setFailed("a message can't be parsed");
    } catch (const std::exception& exception) {
        m_Call.setFailed(exception.what());
    }
    return false;
}

bool IncomingStream::finish()
{
    try {
        m_Sink->finish();
    } catch (const std::exception& exception) {
        m_Call.setFailed(exception.what());
    }
    return false;
}

void IncomingStream::stepEnded(bool ok)
{
    {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        if (m_Confirming) {
            m_Confirming = false;
            m_AllCame = ok;
            m_Over = m_Over || !ok;
        } else {
            m_HasArrived = ok;
            // If nothing more came, that was all, or the caller has gone.
            m_Confirming = !ok && !m_Over;
            if (m_Confirming)
                m_Call.confirm();
        }
    }
    work();
}

} // namespace wirecall
