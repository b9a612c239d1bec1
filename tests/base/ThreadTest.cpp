#include "base/Thread.h"

#include <gtest/gtest.h>

#include "base/Event.h"

namespace quenlor {
namespace {

class Counting : public Thread {
 public:
  void run() override {
    ++runs;
    runner = pthread_self();
  }
  int runs = 0;
  pthread_t runner{};
};

class Waiting : public Thread {
 public:
  void run() override {
    result = go.wait(60000);
    done.signal();
  }
  Event go;
  Event done;
  int result = -1;
};

TEST(Thread, runsItsBodyOnceOnAnotherThread) {
  Counting thread;
  ASSERT_TRUE(thread.start());
  thread.join();
  EXPECT_EQ(thread.runs, 1);
  EXPECT_FALSE(pthread_equal(thread.runner, pthread_self()));
}

TEST(Thread, joinWithoutStartAndTwiceDoesNothing) {
  Counting thread;
  thread.join();
  ASSERT_TRUE(thread.start());
  thread.join();
  thread.join();
  EXPECT_EQ(thread.runs, 1);
}

TEST(Thread, startsOnlyOnceUntilJoined) {
  Waiting thread;
  ASSERT_TRUE(thread.start());
  EXPECT_FALSE(thread.start());
  thread.go.signal();
  thread.join();
  EXPECT_EQ(thread.result, 0);
  ASSERT_TRUE(thread.start());
  thread.join();
}

TEST(Thread, detachedThreadGoesOnAndIsNotWaitedFor) {
  static Waiting thread;  // for ever, as its own thread may end at any time
  ASSERT_TRUE(thread.start());
  thread.detach();
  thread.join();
  EXPECT_EQ(thread.done.wait(0), Event::kTimedOut);
  thread.go.signal();
  EXPECT_EQ(thread.done.wait(60000), 0);
  EXPECT_EQ(thread.result, 0);
}

TEST(Thread, detachWithoutStartDoesNothing) {
  Counting thread;
  thread.detach();
  ASSERT_TRUE(thread.start());
  thread.join();
  EXPECT_EQ(thread.runs, 1);
}

}  // namespace
}  // namespace quenlor
