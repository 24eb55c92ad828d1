#ifndef LUMO_COMPONENTS_WIRECALL_CLOSURES_H
#define LUMO_COMPONENTS_WIRECALL_CLOSURES_H

#include <google/protobuf/stubs/callback.h>

#include <memory>
#include <type_traits>

namespace wirecall {

/// Base of the closures that end asynchronous calls.
class ClosureBase : public google::protobuf::Closure
{
public:
    /// Whether the closure deletes itself after it has run; if so, nothing else may delete it.
    virtual bool deletesItself() const = 0;
};

/// Calls a member function of three arguments in `Run`, once. All arguments are stored by value, also those
/// that the function takes by reference. With `SelfDeleting` the closure then deletes itself, also when the
/// function throws, so it must live on the heap.
template <bool SelfDeleting, class ObjectPointer, class Object, class Argument1, class Argument2,
          class Argument3>
class MethodClosure_Bind3 : public ClosureBase
{
public:
    typedef void (Object::*Method)(Argument1, Argument2, Argument3);

    MethodClosure_Bind3(ObjectPointer object, Method method, Argument1 argument1, Argument2 argument2,
                        Argument3 argument3)
        : m_Object(object),
          m_Method(method),
          m_Argument1(argument1),
          m_Argument2(argument2),
          m_Argument3(argument3)
    {
    }

    void Run() override
    {
        const std::unique_ptr<MethodClosure_Bind3> self(SelfDeleting ? this : nullptr);
        (m_Object->*m_Method)(m_Argument1, m_Argument2, m_Argument3);
    }

    bool deletesItself() const override { return SelfDeleting; }

private:
    template <class T>
    using Stored = std::remove_cv_t<std::remove_reference_t<T>>;

    ObjectPointer m_Object;
    Method m_Method;
    Stored<Argument1> m_Argument1;
    Stored<Argument2> m_Argument2;
    Stored<Argument3> m_Argument3;
};

} // namespace wirecall

#endif
