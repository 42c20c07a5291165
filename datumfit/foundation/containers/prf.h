#pragma once

#include <datumfit/foundation/containers/memory.h>

#include <memory>
#include <utility>

/// Chooses the handle on an object that somebody else owns.
enum coPrfExternTag { coPrfExtern };

/// The deleter of such handles: it leaves the object alone, and external() knows them by it.
struct coPrfExternalDeleter {
    void operator()(void const *) const {}
};

/// A shared handle on a T.
///
/// A handle either owns its object together with its copies, and the last of them deletes it, or refers to one that is
/// owned elsewhere and must outlive it. Handles count atomically, as std::shared_ptr does, to and from which they
/// convert with one count. Where there is no memory for the count, the handle is empty, and an object handed over is
/// deleted.
template <class T>
class coPrf {
public:
    /// An empty handle.
    coPrf() = default;

    /// Takes ownership of the object.
    coPrf(T * object) {
        datumfit::internal::survives([&] { object_.reset(object); });
    }

    /// Refers to an object owned elsewhere.
    coPrf(coPrfExternTag, T * object) {
        datumfit::internal::survives([&] { object_.reset(object, coPrfExternalDeleter()); });
    }

    coPrf(std::shared_ptr<T> object) : object_(std::move(object)) {}
    operator std::shared_ptr<T>() const { return object_; }

    /// The object, which an empty handle has not.
    T & operator*() { return *object_; }
    T const & operator*() const { return *object_; }

    /// The object's address, null for an empty handle.
    T * pointer() { return object_.get(); }
    T const * pointer() const { return object_.get(); }

    /// 1 when the object is owned elsewhere, also for copies; 0 for an owning and for an empty handle.
    int external() const { return std::get_deleter<coPrfExternalDeleter>(object_) != nullptr ? 1 : 0; }

private:
    std::shared_ptr<T> object_;
};
