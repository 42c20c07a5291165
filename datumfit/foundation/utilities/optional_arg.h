#pragma once

template <class Reference>
class utOptionalArg;

/// An optional argument of type T &: it refers to the object that it is made from, or to none.
template <class T>
class utOptionalArg<T &> {
public:
    /// The argument left out.
    utOptionalArg() = default;

    /// The argument given, without more words at the call. The object must outlive the call.
    utOptionalArg(T & object) : object_(&object) {}

    /// The object's address, null when the argument was left out: so the argument tests as whether it was given.
    operator void const *() const { return object_; }

    /// The object, only for an argument that was given.
    T & value() const { return *object_; }

private:
    T * object_ = nullptr;
};
