// Triggers and measurements come to functions of the program.
using System;
using System.Collections.Generic;
using System.Threading;
using Fringix;

public static class EventTests {
  const int Patience = 60000; // milliseconds

  public static void TriggersComeUntilTheSubscriptionEnds() {
    using (var simulated = new SimulatedHead("127.0.0.4"))
    using (Head head = Head.Open(simulated.Address))
    using (var came = new SemaphoreSlim(0))
    using (var other = new SemaphoreSlim(0)) {
      HeadEvent last = default(HeadEvent);
      Subscription first = head.OnEvent(what => { last = what; came.Release(); });
      Raise(simulated, came);
      Expect.Equal(HeadEventKind.Trigger, last.Kind);
      Expect.Equal(1001L, last.Serial);
      first.Dispose();
      first.Dispose();
      while (came.Wait(0)) {}
      using (head.OnEvent(what => other.Release())) Raise(simulated, other);
      Expect.Equal(0, came.CurrentCount, "after the end");
    }
  }

  public static void AMeasurementIsToldOnTheThreadThatMeasures() {
    using (Head head = Head.Open(SimulatedHead.CommonAddress))
    using (Sequence sequence = head.NewSequence(1)) {
      var threads = new List<int>();
      using (head.OnEvent(what => { if (what.Kind == HeadEventKind.Measurement) threads.Add(Thread.CurrentThread.ManagedThreadId); }))
        sequence.Measure();
      sequence.Measure();
      Expect.Equal(1, threads.Count);
      Expect.Equal(Thread.CurrentThread.ManagedThreadId, threads[0]);
    }
  }

  public static void AnExceptionOfAHandlerEndsThereAndIsTold() {
    using (var simulated = new SimulatedHead("127.0.0.4"))
    using (Head head = Head.Open(simulated.Address))
    using (var told = new SemaphoreSlim(0))
    using (var next = new SemaphoreSlim(0)) {
      Exception exception = null;
      Action<Exception> tell = failure => { exception = failure; told.Release(); throw failure; };
      using (head.OnEvent(what => throw new InvalidOperationException("mine"), tell))
      using (head.OnEvent(what => throw new InvalidOperationException("nobody is told")))
      using (head.OnEvent(what => next.Release())) {
        Raise(simulated, told);
        Expect.True(next.Wait(Patience), "the next handler is called all the same");
        Expect.Equal("mine", exception.Message);
      }
      Expect.Equal(1001, head.Key.Serial, "the session goes on;");
    }
  }

  public static void DelegatesLiveAsLongAsTheLibraryCallsThem() {
    using (var simulated = new SimulatedHead("127.0.0.4"))
    using (Head head = Head.Open(simulated.Address))
    using (var came = new SemaphoreSlim(0)) {
      SubscribeAndForget(head, came);
      for (int i = 0; i < 5; i++) {
        GC.Collect();
        GC.WaitForPendingFinalizers();
        Raise(simulated, came);
      }
    }
  }

  public static void AHandlerMayEndItsOwnSubscriptionButNotItsHead() {
    using (Head head = Head.Open(SimulatedHead.CommonAddress))
    using (Sequence sequence = head.NewSequence(1)) {
      int calls = 0;
      Exception refused = null;
      Subscription own = null;
      own = head.OnEvent(what => {
        calls++;
        own.Dispose();
        try { head.Dispose(); } catch (InvalidOperationException exception) { refused = exception; }
      });
      sequence.Measure();
      sequence.Measure();
      Expect.Equal(1, calls);
      Expect.Contains("cannot close that head", refused.Message);
    }
  }

  public static void TheEndOfASubscriptionWaitsForACallUnderWay() {
    using (Head head = Head.Open(SimulatedHead.CommonAddress))
    using (Sequence sequence = head.NewSequence(1))
    using (var entered = new ManualResetEvent(false)) {
      bool left = false;
      Subscription subscription = head.OnEvent(what => {
        entered.Set();
        Thread.Sleep(200);
        left = true;
      });
      var measuring = new Thread(sequence.Measure);
      measuring.Start();
      Expect.True(entered.WaitOne(Patience), "the handler is called");
      subscription.Dispose();
      Expect.True(left, "the handler has left");
      measuring.Join();
    }
  }

  public static void ASubscriptionThatOutlivesItsHeadIsHarmless() {
    Head head = Head.Open(SimulatedHead.CommonAddress);
    Subscription subscription = head.OnEvent(what => {});
    head.Close();
    subscription.Dispose();
    Expect.Throws<ObjectDisposedException>(() => head.OnEvent(what => {}));
    Expect.Throws<ArgumentNullException>(() => head.OnEvent(null));
  }

  static void SubscribeAndForget(Head head, SemaphoreSlim came) => head.OnEvent(what => came.Release());

  // A datagram may get lost, so it is sent again.
  static void Raise(SimulatedHead simulated, SemaphoreSlim came) {
    for (int waited = 0; waited < Patience; waited += 500) {
      simulated.RaiseTrigger();
      if (came.Wait(500)) return;
    }
    throw new NotAsExpected("no trigger came");
  }
}
