#include "ScreenManager/ITargetLocatorProvider.h"

#include "ScreenManager/PlanarTargetLocator.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace {

class SingleLocatorProvider : public ITargetLocatorProvider {
public:
    explicit SingleLocatorProvider(bool& destroyed) : m_destroyed(destroyed) {}
    ~SingleLocatorProvider() override { m_destroyed = true; }

    std::shared_ptr<const TargetLocator> getTargetLocator(const XMLConfigManager*, const ProjectorConfig*) override {
        return m_locator;
    }

private:
    bool& m_destroyed;
    std::shared_ptr<const TargetLocator> m_locator =
        std::make_shared<PlanarTargetLocator>(PlanarTargetLocatorParams(0.0, 2.0, 0.0, 1.0));
};

TEST(ITargetLocatorProvider, HandsOutLocatorsThatOutliveIt) {
    bool destroyed = false;
    std::unique_ptr<ITargetLocatorProvider> provider = std::make_unique<SingleLocatorProvider>(destroyed);
    const std::shared_ptr<const TargetLocator> locator = provider->getTargetLocator(nullptr, nullptr);
    provider.reset();
    EXPECT_TRUE(destroyed) << "destroyed through the interface";
    EXPECT_TRUE(locator->getTargetLocatorParams() == PlanarTargetLocatorParams(0.0, 2.0, 0.0, 1.0));
    static_assert(std::is_abstract_v<ITargetLocatorProvider>);
}

}  // namespace
