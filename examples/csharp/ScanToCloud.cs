// Scans what stands before a head and writes its points, in millimetres, as cloud.ply.
//   ScanToCloud 192.168.0.10
using System;
using System.IO;
using Fringix;

static class ScanToCloud {
  static int Main(string[] arguments) {
    try {
      using (Head head = Head.Open(arguments.Length > 0 ? arguments[0] : "127.0.0.2", TimeSpan.FromSeconds(3))) {
        var plan = new ScanPlan(head.ProjectorSize.Width);
        var calibration = new ScanCalibration(head.Data["calibration.json"]);
        using (var scanner = new Scanner(plan, calibration)) {
          Measure(head, plan, scanner);
          Cloud cloud = scanner.Finish(0);
          cloud.SavePly("cloud.ply");
          Console.WriteLine("{0} points, sigma {1:0.000} mm, in cloud.ply", cloud.Count, cloud.ExpectedSigma);
        }
        return 0;
      }
    } catch (Exception exception) when (exception is FringixException || exception is IOException) {
      Console.Error.WriteLine(exception.Message);
      return 1;
    }
  }

  static void Measure(Head head, ScanPlan plan, Scanner scanner) {
    using (Sequence sequence = head.NewSequence(plan.Count)) {
      for (int i = 0; i < plan.Count; i++) sequence.PutLine(i, plan.Line(i));
      sequence.Measure();
      for (int i = 0; i < plan.Count; i++) scanner.Add(0, head.Stored(i));
    }
  }
}
