#pragma once

/// A pointer to an object that somebody else owns, and that outlives it.
template <class T>
class utObserverPtr {
public:
    explicit utObserverPtr(T * object) : object_(object) {}

    T & operator*() const { return *object_; }

private:
    T * object_;
};

template <class T>
utObserverPtr<T> ut_make_observer(T * object) {
    return utObserverPtr<T>(object);
}
