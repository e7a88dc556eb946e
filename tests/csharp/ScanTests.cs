// From pictures of a simulated head to points.
using System;
using System.IO;
using System.Linq;
using System.Text;
using Fringix;

public static class ScanTests {
  public static void AScanGivesPointsAndAFileThatHoldsThem() {
    using (var simulated = new SimulatedHead("127.0.0.5", SimulatedHead.ForScans))
    using (Head head = Head.Open(simulated.Address))
    using (Scanner scanner = ScannerFor(head, out ScanPlan plan)) {
      Expect.Throws<BadPicturesException>(() => scanner.NextExposure(0));
      Measure(head, scanner, plan);
      Cloud cloud = scanner.Finish(0);
      Expect.True(cloud.Count > 30000, cloud.Count + " points are more than 30000");
      Expect.Equal(cloud.Count, cloud.Reason.LongCount(reason => reason == 0));
      Expect.True(cloud.ExpectedSigma > 0 && cloud.ExpectedSigma < 0.5, "a sigma in mm: " + cloud.ExpectedSigma);
      int point = Array.IndexOf(cloud.Reason, (byte)0);
      Expect.True(cloud.Points[3 * point + 2] > 300 && cloud.Points[3 * point + 2] < 700, "a depth in mm: " + cloud.Points[3 * point + 2]);
      ExpectPly(cloud);
    }
  }

  public static void ASecondExposureIsMergedWithTheFirst() {
    using (var simulated = new SimulatedHead("127.0.0.5", SimulatedHead.ForScans))
    using (Head head = Head.Open(simulated.Address))
    using (Scanner scanner = ScannerFor(head, out ScanPlan plan)) {
      head.Ini["Camera", "Exposure"] = 5000;
      Measure(head, scanner, plan);
      scanner.NextExposure(0);
      head.Ini["Camera", "Exposure"] = 20000;
      Measure(head, scanner, plan);
      double merged = scanner.Finish(0).ExpectedSigma;
      head.Ini["Camera", "Exposure"] = 5000;
      Measure(head, scanner, plan);
      double dark = scanner.Finish(0).ExpectedSigma;
      Expect.True(merged < dark, "both tell more than the dark one alone: " + merged + " < " + dark);
    }
  }

  public static void WhatIsWrongIsTold() {
    Expect.Throws<BadParameterException>(() => new ScanPlan(3));
    Expect.Contains("projector", Expect.Throws<BadParameterException>(() => new ScanPlan(3)).Reason);
    var unread = Expect.Throws<BadCalibrationException>(() => new ScanCalibration(Encoding.UTF8.GetBytes("{}")));
    Expect.True(unread.Reason.Length > 5, "a reason");
    using (var simulated = new SimulatedHead("127.0.0.5", SimulatedHead.ForScans))
    using (Head head = Head.Open(simulated.Address)) {
      var calibration = new ScanCalibration(head.Data["calibration.json"]);
      Expect.Equal(1001, calibration.Serial);
      Expect.Equal(2, calibration.CameraCount);
      Expect.Equal(new PixelSize(320, 256), calibration.CameraSize(1));
      Expect.Throws<ArgumentOutOfRangeException>(() => calibration.CameraSize(2));
      Expect.Throws<BadParameterException>(() => new Scanner(new ScanPlan(1280), calibration));
      var settings = new ScanSettings { Threads = 0 };
      Expect.Throws<BadParameterException>(() => new Scanner(new ScanPlan(640), calibration, settings));
      using (var scanner = new Scanner(new ScanPlan(640), calibration)) {
        Expect.Throws<BadPicturesException>(() => scanner.Add(0, new Picture(new PixelSize(10, 10))));
        Expect.Throws<BadPicturesException>(() => scanner.Finish(0));
      }
    }
  }

  static Scanner ScannerFor(Head head, out ScanPlan plan) {
    plan = new ScanPlan(head.ProjectorSize.Width);
    return new Scanner(plan, new ScanCalibration(head.Data["calibration.json"]), new ScanSettings { Threads = 2 });
  }

  static void Measure(Head head, Scanner scanner, ScanPlan plan) {
    using (Sequence sequence = head.NewSequence(plan.Count)) {
      for (int i = 0; i < plan.Count; i++) sequence.PutLine(i, plan.Line(i));
      sequence.Measure();
      for (int i = 0; i < plan.Count; i++) scanner.Add(0, head.Stored(i));
    }
  }

  static void ExpectPly(Cloud cloud) {
    string path = Path.GetTempFileName();
    cloud.SavePly(path);
    byte[] bytes = File.ReadAllBytes(path);
    File.Delete(path);
    string text = Encoding.ASCII.GetString(bytes, 0, 400);
    int header = text.IndexOf("end_header\n") + 11;
    Expect.Contains("element vertex " + cloud.Count + "\n", text);
    Expect.Equal(header + 25 * cloud.Count, (long)bytes.Length);
    int first = Array.IndexOf(cloud.Reason, (byte)0);
    Expect.Equal(cloud.Points[3 * first + 2], BitConverter.ToSingle(bytes, header + 8));
    Expect.Equal(cloud.Intensity[first], bytes[header + 24]);
  }
}
