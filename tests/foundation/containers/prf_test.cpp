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

TEST(Prf, OwningHandlesDeleteTheObjectOnce) {
    int deletions = 0;
    {
        coPrf<Base> const a(new Watched(deletions));
        coPrf<Base> b = a, c(std::shared_ptr<Base>{a});
        b = std::move(c);
        c = b;
        EXPECT_EQ(a.pointer(), &*c);
        EXPECT_EQ(0, a.external());
        std::shared_ptr<Base> const standard = b;
        EXPECT_EQ(4, standard.use_count());
        EXPECT_EQ(0, deletions);
    }
    EXPECT_EQ(1, deletions);
}

TEST(Prf, ExternalHandlesLeaveTheObjectAlone) {
    int deletions = 0;
    Watched object(deletions);
    {
        coPrf<Base> const a(coPrfExtern, &object);
        coPrf<Base> const b(a), c(std::shared_ptr<Base>(&object, coPrfExternalDeleter()));
        EXPECT_EQ(1, a.external());
        EXPECT_EQ(1, b.external());
        EXPECT_EQ(1, c.external());
        EXPECT_EQ(&object, b.pointer());
    }
    EXPECT_EQ(0, deletions);
    EXPECT_EQ(0, coPrf<Base>().external());
    EXPECT_EQ(nullptr, coPrf<Base>().pointer());
}

} // namespace
