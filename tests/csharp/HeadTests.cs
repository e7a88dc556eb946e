// Every member of Head and what belongs to it, against a simulated head.
using System;
using System.Collections.Generic;
using System.Linq;
using System.Net;
using System.Net.Sockets;
using System.Text;
using System.Threading;
using Fringix;

public static class HeadTests {
  static readonly PixelSize camera = new PixelSize(64, 48);
  static readonly PixelSize projector = new PixelSize(32, 20);

  static Head Open() => Head.Open(SimulatedHead.CommonAddress, TimeSpan.FromSeconds(30));

  public static void KeyAndSizesAreTheHeads() {
    using (Head head = Open()) {
      Expect.Equal(1001, head.Key.Serial);
      Expect.Equal(3300, head.Key.ProtocolVersion);
      Expect.Equal("127.0.0.2", head.Key.Address);
      Expect.Equal(camera, head.CameraSize);
      Expect.Equal(projector, head.ProjectorSize);
      Expect.Equal(2, head.ChannelCount);
    }
  }

  public static void LivePicturesComeWholeInPartAndReduced() {
    using (Head head = Open()) {
      Expect.Equal(camera, head.Live().Size);
      Expect.True(head.Live(channel: 1).Pixels.Any(pixel => pixel > 0), "a picture that is not dark");
      Expect.Equal(new PixelSize(16, 8), head.Live(new PixelRegion(4, 6, 16, 8)).Size);
      Expect.Equal(new PixelSize(32, 24), head.Live(reduce: 2).Size);
      Expect.Equal(new PixelSize(4, 2), head.Live(new PixelRegion(4, 6, 16, 8), 1, 4).Size);
    }
  }

  public static void PicturesComeIntoMemoryOfTheCallers() {
    using (Head head = Open()) {
      var pixels = new byte[camera.Width * camera.Height + 2];
      head.Live(new Span<byte>(pixels, 1, pixels.Length - 2));
      Expect.True(pixels[1] > 0 && pixels[pixels.Length - 2] > 0, "the picture is there");
      Expect.True(pixels[0] == 0 && pixels[pixels.Length - 1] == 0, "nothing beside it was written");
      Expect.Throws<ArgumentException>(() => head.Live(new Span<byte>(pixels, 0, 100)));
      Expect.Throws<ArgumentException>(() => head.Stored(0, new Span<byte>(pixels, 0, 100)));
    }
  }

  public static void ARegionOutsideIsRefused() {
    using (Head head = Open()) Expect.Throws<BadParameterException>(() => head.Live(new PixelRegion(60, 0, 5, 5)));
    Expect.Throws<ArgumentOutOfRangeException>(() => new PixelRegion(-1, 0, 5, 5));
  }

  public static void ASequenceIsMeasuredAndItsPicturesFetched() {
    using (Head head = Open())
    using (Sequence sequence = head.NewSequence(4)) {
      sequence.PutLine(0, Filled(32, 255));
      sequence.PutLine(1, Filled(32, 0));
      sequence.Measure();
      Expect.True(Mean(head.Stored(0)) > Mean(head.Stored(1)) + 20, "white is brighter than black");
      Picture whole = head.Stored(0, channel: 1), part = head.Stored(0, new PixelRegion(8, 4, 16, 12), 1);
      for (int row = 0; row < 12; row++)
        Expect.True(part.Row(row).SequenceEqual(whole.Row(4 + row).Slice(8, 16)), "row " + row + " is that of the whole picture");
      sequence.Measure(1, 1);
      Expect.Throws<ArgumentOutOfRangeException>(() => head.Stored(256));
    }
  }

  public static void SequencesAreFilledInEveryWay() {
    using (Head head = Open())
    using (Sequence sequence = head.NewSequence(12)) {
      sequence.Put(0, Filled(3 * 32 * 20, 9));
      sequence.PutLine24(1, Filled(3 * 32, 9));
      sequence.PutColumn(2, Filled(20, 9));
      sequence.PutColumn24(3, Filled(3 * 20, 9));
      sequence.Gray(4, 1, 0, 0);
      sequence.Phase(5, 4, 8, 0);
      sequence.Image(9, 0, 255, 4);
      sequence.Show(4);
      head.Show(Filled(3 * 8 * 4, 200), new PixelSize(8, 4));
      Expect.Throws<ArgumentException>(() => sequence.Put(0, Filled(100, 9)));
      Expect.Throws<BadParameterException>(() => sequence.Gray(4, 24, 0, 0));
      Expect.Throws<HeadSystemException>(() => sequence.PutLine(0, Filled(31, 9)));
    }
  }

  public static void ASequenceIsFreedWithItsObject() {
    using (Head head = Open()) {
      Sequence sequence = head.NewSequence(1);
      sequence.Dispose();
      sequence.Dispose();
      Expect.Throws<HeadSystemException>(() => sequence.Measure());
    }
  }

  public static void SettingsAreReadAndSetWithinTheirRanges() {
    using (Head head = Open()) {
      foreach (Setting setting in new[] { head.Gain, head.LedPower, head.Brightness }) {
        int before = setting.Value;
        setting.Value = setting.Range.Min;
        Expect.Equal(setting.Range.Min, setting.Value);
        setting.Value = before;
      }
      Expect.Equal(10, head.LedPower.Range.Min);
      Expect.Equal(200, head.LedPower.Range.Max);
      Expect.Throws<BadParameterException>(() => head.LedPower.Value = 201);
      head.SetLedPowerDirectly(255);
      Expect.Equal(255, head.LedPower.Value);
      head.LedPower.Value = 100;
    }
  }

  public static void StateIsTold() {
    using (Head head = Open()) {
      Expect.Equal(0, head.CheckSystem());
      Expect.True(head.Temperature >= 22 && head.ProjectorTemperature >= 22, "temperatures");
      Expect.True(head.Uptime >= 0, "uptime");
      head.SetMirrorState(0);
      Expect.Equal(1, head.ProjectorStatus, "LED on, mirrors off;");
      head.SetMirrorState(1);
      Expect.Equal(3, head.ProjectorStatus);
      Expect.Equal(20000, head.Exposure);
    }
  }

  public static void AMaskIsSetAndCleared() {
    using (Head head = Open()) {
      head.SetMask(new Picture(projector));
      Expect.Equal(7, head.ProjectorStatus);
      head.ClearMask();
      Expect.Equal(3, head.ProjectorStatus);
    }
  }

  public static void DataComesBackAsItWentEvenUnderAForeignName() {
    using (Head head = Open()) {
      byte[] bytes = Enumerable.Range(0, 1000).Select(i => (byte)i).ToArray();
      head.Data["block 1"] = bytes;
      Expect.Bytes(bytes, head.Data["block 1"]);
      head.Data.Save("part", new ReadOnlySpan<byte>(bytes, 10, 3));
      Expect.Bytes(new byte[] { 10, 11, 12 }, head.Data["part"]);
      Expect.Equal(0, head.Data["no such block"].Length);
      Expect.Throws<HeadSystemException>(() => head.Data["empty"] = new byte[0]);
      Expect.Throws<HeadSystemException>(() => head.Data["größe"] = bytes);
      Expect.Throws<ArgumentException>(() => head.Data["a\0b"] = bytes);
      Expect.Throws<ArgumentNullException>(() => head.Data[null] = bytes);
      Expect.Equal(1, Expect.Throws<FringixException>(() => head.Data[new string('x', 65)] = bytes).Code);
    }
  }

  public static void IniLinesSerialPortAndProjectorAnswer() {
    using (Head head = Open()) {
      head.Ini["Camera", "Exposure"] = 5000;
      Expect.Equal(5000, head.Ini["Camera", "Exposure"]);
      head.Ini["Camera", "Exposure"] = 20000;
      Expect.Throws<HeadSystemException>(() => Expect.Equal(0, head.Ini["No", "Key"]));
      head.Gpio[3] = 1;
      Expect.Equal(1, head.Gpio[3]);
      Expect.Throws<HeadSystemException>(() => head.Gpio[99] = 1);
      Expect.Equal("temperature? ü", head.SerialCommand("temperature? ü"));
      Expect.Bytes(new byte[] { 1, 0, 0 }, head.ProjectorCommand(1, 0));
    }
  }

  public static void HeadsAreFoundAndOpenedBySerialNumber() {
    string address = SimulatedHead.CommonAddress;
    FoundHead found = Library.Find().Single(head => head.Serial == 1001);
    Expect.Equal(address, found.Address);
    Expect.Equal("QOR_T3D", found.Model);
    Expect.Equal(7, found.Info.Length);
    using (Head head = Head.OpenBySerial(1001)) Expect.Equal(address, head.Key.Address);
    FringixException none = Expect.Throws<HeadConnectionException>(() => Head.OpenBySerial(77));
    Expect.Contains("head 77 does not answer", none.Message);
  }

  public static void TheLibraryTellsItsVersionAndTheDialogIsNotShownWithoutADisplay() {
    Expect.Equal(4002, Library.Version);
    Library.Trace(false);
    Expect.Equal(null, Library.Select());
  }

  public static void AnExceptionTellsWhatWhereAndWhatNext() {
    var exception = Expect.Throws<HeadConnectionException>(() => Head.Open("127.0.0.99"));
    Expect.Equal(-10, exception.Code);
    Expect.Equal("SLDevAlloc", exception.Operation);
    Expect.Equal("127.0.0.99", exception.Head);
    Expect.Equal(
        "SLDevAlloc of head 127.0.0.99: SLCONNECTION_ERROR (-10). Check that the head is on and reachable, then open a new session.",
        exception.Message);
  }

  public static void OpeningGivesUpWhenTheTimeIsOver() {
    using (var deaf = new Socket(AddressFamily.InterNetwork, SocketType.Stream, ProtocolType.Tcp)) {
      deaf.Bind(new IPEndPoint(IPAddress.Parse("127.0.0.90"), 44330));
      deaf.Listen(0);
      var waiting = new List<Socket>();
      for (int i = 0; i < 3; i++) { // more than the system keeps for a program that takes none
        waiting.Add(new Socket(AddressFamily.InterNetwork, SocketType.Stream, ProtocolType.Tcp) { Blocking = false });
        try { waiting[i].Connect(deaf.LocalEndPoint); } catch (SocketException) {}
      }
      var exception = Expect.Throws<HeadConnectionException>(() => Head.Open("127.0.0.90", TimeSpan.FromMilliseconds(200)));
      Expect.Contains("nothing answers within 0", exception.Message);
      waiting.ForEach(socket => socket.Dispose());
    }
    Expect.Throws<ArgumentException>(() => Head.Open("head-3", TimeSpan.FromSeconds(1)));
  }

  public static void WhoDoesNotGreetIsNoHead() {
    var listener = new TcpListener(IPAddress.Parse("127.0.0.91"), 44330);
    listener.Start();
    Expect.Throws<HandshakeTimeoutException>(() => Head.Open("127.0.0.91", TimeSpan.FromSeconds(30)));
    listener.Stop();
  }

  public static void AnOldHeadIsToldFromANewOne() {
    using (var old = new SimulatedHead("127.0.0.3", SimulatedHead.Small + " --protocol 2300"))
    using (Head head = Head.Open(old.Address)) Expect.Throws<VersionTooOldException>(() => Expect.Equal(0, head.Temperature));
  }

  public static void AFailedMeasurementIsToldAsOne() {
    using (var faulty = new SimulatedHead("127.0.0.3", SimulatedHead.Small + " --measurement-fault -2"))
    using (Head head = Head.Open(faulty.Address))
    using (Sequence sequence = head.NewSequence(1)) Expect.Throws<MeasurementFailedException>(() => sequence.Measure());
  }

  public static void ALostConnectionStaysLost() {
    var ending = new SimulatedHead("127.0.0.3");
    using (Head head = Head.Open(ending.Address)) {
      ending.Dispose();
      Expect.Throws<HeadConnectionException>(() => head.Live());
      Expect.Throws<HeadSystemException>(() => Expect.Equal(camera, head.CameraSize));
      Expect.Throws<HeadSystemException>(() => head.Live());
    }
  }

  public static void AClosedHeadIsDisposed() {
    Head head = Open();
    head.Close();
    head.Close();
    head.Dispose();
    Expect.Throws<ObjectDisposedException>(() => head.Live());
    Expect.Throws<ObjectDisposedException>(() => Expect.Equal(camera, head.CameraSize));
  }

  // The head has no room for another session before one of those that nobody can reach any more has ended.
  public static void SessionsThatNobodyHoldsAreEndedByTheCollector() {
    using (var narrow = new SimulatedHead("127.0.0.3", SimulatedHead.Small + " --clients 4")) {
      OpenAndForget(narrow.Address, 4);
      Expect.Throws<HeadConnectionException>(() => Head.Open(narrow.Address));
      for (int i = 0; !Opens(narrow.Address); i++) {
        Expect.True(i < 600, "a session has ended after a minute");
        GC.Collect();
        GC.WaitForPendingFinalizers();
        Thread.Sleep(100);
      }
    }
  }

  static bool Opens(string address) {
    try {
      Head.Open(address).Dispose();
      return true;
    } catch (HeadConnectionException) {
      return false;
    }
  }

  [System.Runtime.CompilerServices.MethodImpl(System.Runtime.CompilerServices.MethodImplOptions.NoInlining)]
  static void OpenAndForget(string address, int count) {
    var opening = new Thread(() => { // whose stack goes with it
      for (int i = 0; i < count; i++) Expect.Equal(1001, Head.Open(address).Key.Serial);
    });
    opening.Start();
    opening.Join();
  }

  public static void SeveralThreadsUseSeveralHeadsAtOnce() {
    using (var other = new SimulatedHead("127.0.0.3")) {
      int pictures = 0;
      var threads = new[] { SimulatedHead.CommonAddress, other.Address, other.Address }.Select(address => new Thread(() => {
        using (Head head = Head.Open(address))
          for (int i = 0; i < 20; i++) if (head.Live().Size.Equals(camera)) Interlocked.Increment(ref pictures);
      })).ToList();
      threads.ForEach(thread => thread.Start());
      threads.ForEach(thread => thread.Join());
      Expect.Equal(60, pictures);
    }
  }

  public static void ACallOfAnotherThreadComesToItsEndBeforeTheSessionEnds() {
    using (var slow = new SimulatedHead("127.0.0.3", "--camera 64x48 --projector 32x20 --image-time 100")) {
      Head head = Head.Open(slow.Address);
      Sequence sequence = head.NewSequence(5);
      Exception thrown = null;
      var begun = new ManualResetEvent(false);
      var measuring = new Thread(() => {
        try {
          begun.Set();
          sequence.Measure();
        } catch (Exception exception) { thrown = exception; }
      });
      measuring.Start();
      begun.WaitOne();
      head.Dispose();
      measuring.Join();
      Expect.True(thrown == null || thrown is ObjectDisposedException, "no other failure than " + thrown);
    }
  }

  static byte[] Filled(int length, byte value) => Enumerable.Repeat(value, length).ToArray();

  static double Mean(Picture picture) => picture.Pixels.Average(pixel => (double)pixel);
}
