// Scans with three exposures, for scenes with dark and shiny parts: each pixel is taken from the exposure that tells most of it.
//   HdrScan 192.168.0.10
using System;
using Fringix;

static class HdrScan {
  static int Main(string[] arguments) {
    try {
      using (Head head = Head.Open(arguments.Length > 0 ? arguments[0] : "127.0.0.2", TimeSpan.FromSeconds(3))) {
        var plan = new ScanPlan(head.ProjectorSize.Width);
        using (var scanner = new Scanner(plan, new ScanCalibration(head.Data["calibration.json"]))) {
          MeasureSeries(head, plan, scanner);
          Console.WriteLine("{0} points of 3 exposures", scanner.Finish(0).Count);
        }
        return 0;
      }
    } catch (FringixException exception) {
      Console.Error.WriteLine(exception.Message);
      return 1;
    }
  }

  // The patterns stay on the head; only the exposure, a value of its configuration in microseconds, changes.
  static void MeasureSeries(Head head, ScanPlan plan, Scanner scanner) {
    int exposure = head.Ini["Camera", "Exposure"];
    using (Sequence sequence = head.NewSequence(plan.Count)) {
      for (int i = 0; i < plan.Count; i++) sequence.PutLine(i, plan.Line(i));
      try {
        foreach (double factor in new[] { 1, 0.25, 4 }) {
          if (factor != 1) scanner.NextExposure(0);
          head.Ini["Camera", "Exposure"] = (int)(exposure * factor);
          sequence.Measure();
          for (int i = 0; i < plan.Count; i++) scanner.Add(0, head.Stored(i));
        }
      } finally {
        head.Ini["Camera", "Exposure"] = exposure;
      }
    }
  }
}
