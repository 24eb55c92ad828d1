#ifndef LUMO_CORE_VERDICTS_H
#define LUMO_CORE_VERDICTS_H

#include "lumo/core/LumoDataTypes.h"

/// What an answer is worth. All but a success are logged, as "OPERATION" and the words given here.
enum class Judgement
{
    Success,
    Error,      ///< "Result Error"
    TerseError, ///< "Error"
    Null        ///< "Result NULL": nothing matches
};

/// The verdicts of CallFrame::ask. A verdict is a function of the response; its `Outcome` is what the method
/// returns: a bool, or an ENUM_RET_TYPE where "nothing matches" differs from a failure.
namespace verdicts {

/// All results are a success but -2, an error, and -1, nothing matches.
struct Found
{
    using Outcome = ENUM_RET_TYPE;
    template <class Response>
    Judgement operator()(const Response& response) const
    {
        const int result = response.result();
        return result == -2 ? Judgement::Error : result == -1 ? Judgement::Null : Judgement::Success;
    }
};
constexpr Found found{};

/// Only result 0 is a success; `bad` is the judgement of all others.
template <Judgement bad>
struct Zero
{
    using Outcome = bool;
    template <class Response>
    Judgement operator()(const Response& response) const
    {
        return response.result() == 0 ? Judgement::Success : bad;
    }
};
constexpr Zero<Judgement::Error> zero{};
constexpr Zero<Judgement::TerseError> zeroTersely{};

/// Only status code 0 is a success, in the answers of the planning service.
struct StatusZero
{
    using Outcome = bool;
    template <class Response>
    Judgement operator()(const Response& response) const
    {
        return response.status().status_code() == 0 ? Judgement::Success : Judgement::Error;
    }
};
constexpr StatusZero statusZero{};

/// The response has a flag of its own for success.
template <class Response>
struct Flag
{
    using Outcome = bool;
    bool (Response::*flag)() const;
    Judgement operator()(const Response& response) const
    {
        return (response.*flag)() ? Judgement::Success : Judgement::Error;
    }
};
template <class Response>
Flag(bool (Response::*)() const) -> Flag<Response>;

/// Every answer is a success, for a response without a verdict.
struct Any
{
    using Outcome = bool;
    template <class Response>
    Judgement operator()(const Response&) const
    {
        return Judgement::Success;
    }
};
constexpr Any any{};

} // namespace verdicts

#endif
