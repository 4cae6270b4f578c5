#include "screen.h"
#include "ui/bridge/model_bridge.h"
#include "ui/bridge/qt_main_context.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QSignalSpy>
#include <QThread>

#include <memory>
#include <thread>
#include <vector>

using namespace zembrastel;
using namespace zembrastel::ui;
using zembrastel::testing::waitFor;
using namespace std::chrono_literals;

TEST(QtMainContext, PostedWorkRunsInOrderOnTheMainThread) {
    QtMainContext context;
    constexpr int threads = 4;
    constexpr int each = 500;
    std::vector<std::vector<int>> seen(threads);
    bool elsewhere = false;
    int left = threads * each;
    {
        std::vector<std::jthread> posting;
        for (std::size_t thread = 0; thread < threads; ++thread) {
            posting.emplace_back([&, thread] {
                for (int i = 0; i < each; ++i) {
                    context.post([&, thread, i] {
                        elsewhere = elsewhere || QThread::currentThread() != qApp->thread();
                        seen[thread].push_back(i);
                        --left;
                    });
                }
            });
        }
    }
    EXPECT_EQ(left, threads * each) << "nothing runs within post()";
    ASSERT_TRUE(waitFor([&left] { return left == 0; }));
    EXPECT_FALSE(elsewhere);
    for (const auto& order : seen) EXPECT_TRUE(std::ranges::is_sorted(order));
}

TEST(QtMainContext, DelayedWorkIsNeitherLostNorEarly) {
    QtMainContext context;
    std::vector<int> order;
    const auto began = std::chrono::steady_clock::now();
    std::chrono::steady_clock::duration took{};
    std::jthread([&] {
        context.postAfter(60ms, [&] {
            order.push_back(2);
            took = std::chrono::steady_clock::now() - began;
        });
        context.postAfter(1ms, [&] { order.push_back(1); });
        context.post([&] { order.push_back(0); });
    }).join();
    ASSERT_TRUE(waitFor([&order] { return order.size() == 3; }));
    EXPECT_EQ(order, (std::vector{0, 1, 2}));
    EXPECT_GE(took, 59ms);
}

TEST(QtMainContext, PostingAfterTheApplicationEndedIsHarmless) {
    // In a process of its own, because no second application can follow.
    EXPECT_EXIT(
        {
            const auto context = std::make_unique<QtMainContext>();
            const auto witness = std::make_shared<int>(0);
            context->post([witness] { ++*witness; });
            delete qApp;
            std::jthread([&] {
                context->post([witness] { ++*witness; });
                context->postAfter(1ms, [witness] { ++*witness; });
            }).join();
            std::_Exit(*witness);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST(ModelBridge, FloodOfStatusesIsReportedOncePerTurn) {
    QtMainContext context;
    AppModel model(context, {.demonstration = demonstration()});
    ModelBridge bridge(model);
    ASSERT_FALSE(model.profiles().empty());
    const Uuid id = model.profiles().front().id;
    QSignalSpy statuses(&bridge, &ModelBridge::statusChanged);
    QSignalSpy profiles(&bridge, &ModelBridge::profilesChanged);
    for (int i = 0; i < 50; ++i) model.toggle(id);
    EXPECT_EQ(statuses.count(), 0);
    ASSERT_TRUE(waitFor([&statuses] { return statuses.count() > 0; }));
    EXPECT_EQ(statuses.count(), 1);
    EXPECT_EQ(statuses.first().first().value<Uuid>(), id);

    model.toggle(id);
    profiles.clear();
    model.remove(id);
    EXPECT_EQ(profiles.count(), 1) << "lists must not lag behind the model";
    QCoreApplication::processEvents();
    EXPECT_EQ(statuses.count(), 1) << "a removed profile is not reported";
}
