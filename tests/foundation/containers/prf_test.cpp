#include <datumfit/foundation/containers/prf.h>
#include <gtest/gtest.h>

namespace {

struct Base {
    virtual ~Base() = default;
};
struct Watched : Base {
    explicit Watched(int & deletions) : deletions_(deletions) {}
    ~Watched() override { ++deletions_; }
    int & deletions_;
};

TEST(Prf, OnlyOwningHandlesDeleteTheObject) {
    int deletions = 0;
    Watched object(deletions);
    {
        coPrf<Base> const owner(new Watched(deletions)), external(coPrfExtern, &object);
        coPrf<Base> a = owner, b(std::shared_ptr<Base>{a});
        EXPECT_EQ(4, std::shared_ptr<Base>(a).use_count());
        EXPECT_EQ(owner.pointer(), &*b);
        EXPECT_EQ(0, a.external());
        a = external;
        EXPECT_EQ(1, a.external());
        EXPECT_EQ(&object, a.pointer());
        EXPECT_EQ(1, coPrf<Base>(std::shared_ptr<Base>(&object, coPrfExternalDeleter())).external());
        EXPECT_EQ(0, deletions + coPrf<Base>().external());
    }
    EXPECT_EQ(1, deletions);
}

}  // namespace
