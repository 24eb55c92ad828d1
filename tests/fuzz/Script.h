#ifndef LUMO_TESTS_FUZZ_SCRIPT_H
#define LUMO_TESTS_FUZZ_SCRIPT_H

#include "lumo/components/wirecall/RpcChannel.h"
#include "script.pb.h"

#include <mutex>
#include <vector>

/// A channel without a network that answers from a script. An answer is taken once, so that every run ends:
/// when there is none of a call's type any more, the call fails.
class ScriptedChannel : public wirecall::RpcChannel
{
public:
    void play(const fuzz::Script& script);

    void CallMethod(const google::protobuf::MethodDescriptor* method,
                    google::protobuf::RpcController* controller, const google::protobuf::Message* request,
                    google::protobuf::Message* response, google::protobuf::Closure* done) override;

private:
    /// Changes an answer to what it declares of itself.
    virtual void complete(const fuzz::Answer&, const google::protobuf::Message&, google::protobuf::Message&)
    {
    }

    std::mutex m_Mutex; ///< transfers call from several threads
    fuzz::Script m_Script;
    int m_Next = 0;
};

/// The input is a script in protobuf's text format, which the mutator changes field by field. Defined by each
/// target: whose responses the mutator makes up, and what is run.
std::vector<const google::protobuf::ServiceDescriptor*> scriptedServices();
void runScript(const fuzz::Script& script);

#endif
