// The examples in C# as a user runs them, with simulated heads.
using System;
using System.Diagnostics;
using System.IO;
using System.Linq;

public static class ExampleTests {
  const int Patience = 60000; // milliseconds

  public static void FirstPicture() {
    using (var head = new SimulatedHead("127.0.0.6", SimulatedHead.ForScans)) {
      Outcome outcome = Run("FirstPicture", head.Address);
      Expect.Equal("head 1001: 320x256 pixels in live.pgm\n", outcome.Output, outcome.Errors);
      Expect.Equal(15 + 320 * 256L, new FileInfo(Path.Combine(Folder, "live.pgm")).Length);
    }
  }

  public static void ScanToCloud() {
    using (var head = new SimulatedHead("127.0.0.6", SimulatedHead.ForScans)) {
      Outcome outcome = Run("ScanToCloud", head.Address);
      Expect.Equal(0, outcome.ExitCode, outcome.Errors);
      int points = int.Parse(outcome.Output.Split(' ')[0]);
      Expect.True(points > 30000, points + " points are more than 30000");
      Expect.Contains("element vertex " + points + "\n", File.ReadAllText(Path.Combine(Folder, "cloud.ply")));
    }
  }

  public static void HdrScan() {
    using (var head = new SimulatedHead("127.0.0.6", SimulatedHead.ForScans)) {
      Outcome outcome = Run("HdrScan", head.Address);
      Expect.Equal(0, outcome.ExitCode, outcome.Errors);
      Expect.True(int.Parse(outcome.Output.Split(' ')[0]) > 30000, outcome.Output);
      using (Fringix.Head session = Fringix.Head.Open(head.Address)) Expect.Equal(20000, session.Exposure, "as it was;");
    }
  }

  public static void SeveralHeadsOfWhichOneIsOff() {
    using (var first = new SimulatedHead("127.0.0.6"))
    using (var second = new SimulatedHead("127.0.0.7")) {
      Expect.Equal(0, Run("SeveralHeads", "127.0.0.6 127.0.0.7").ExitCode);
      Outcome outcome = Run("SeveralHeads", "127.0.0.6 127.0.0.8 127.0.0.7");
      Expect.Equal(1, outcome.ExitCode);
      Expect.Equal(2, outcome.Output.Split('\n').Count(line => line.Contains(": brightness ")), outcome.Output);
      Expect.Contains("127.0.0.8: ", outcome.Errors);
    }
  }

  public static void WatchTriggersUntilEnter() {
    using (var head = new SimulatedHead("127.0.0.6"))
    using (Process example = Start("WatchTriggers", head.Address)) {
      Expect.Equal("end with Enter", example.StandardOutput.ReadLine());
      var line = example.StandardOutput.ReadLineAsync();
      for (int waited = 0; waited < Patience && !line.Wait(500); waited += 500) head.RaiseTrigger(); // a datagram may get lost
      Expect.Equal("trigger of head 1001", line.IsCompleted ? line.Result : "nothing");
      example.StandardInput.WriteLine();
      Expect.Equal(0, Ended(example));
    }
  }

  public static void StationGoesOnWhenItsHeadIsBack() {
    var head = new SimulatedHead("127.0.0.6");
    using (Process example = Start("Station", head.Address)) {
      example.StandardInput.WriteLine("part-1");
      Expect.Contains("part-1: level ", example.StandardOutput.ReadLine());
      head.Dispose();
      example.StandardInput.WriteLine("part-2");
      Expect.Contains("connected", example.StandardError.ReadLine());
      Expect.Contains("Connecting again.", example.StandardError.ReadLine());
      using (new SimulatedHead("127.0.0.6")) {
        Expect.Contains("part-2: level ", example.StandardOutput.ReadLine());
        example.StandardInput.Close();
        Expect.Equal(0, Ended(example));
      }
    }
  }

  public static void OwnCodeTest() {
    Outcome outcome = Run("OwnCodeTest", Path.Combine(SimulatedHead.Programs, "fringix-head"));
    Expect.Equal(0, outcome.ExitCode, outcome.Output + outcome.Errors);
    Expect.Equal(3, outcome.Output.Split('\n').Count(line => line.StartsWith("passed: ")), outcome.Output);
  }

  public static void FailuresAreTold() {
    foreach (string example in new[] { "FirstPicture", "ScanToCloud", "HdrScan", "SeveralHeads", "WatchTriggers" }) {
      Outcome outcome = Run(example, "127.0.0.66");
      Expect.Equal(1, outcome.ExitCode, example);
      Expect.Contains("SLCONNECTION_ERROR", outcome.Errors);
    }
  }

  struct Outcome {
    public int ExitCode;
    public string Output, Errors;
  }

  static string Folder => Environment.GetEnvironmentVariable("FRINGIX_EXAMPLES");

  static Outcome Run(string example, string arguments) {
    using (Process process = Start(example, arguments)) {
      var output = process.StandardOutput.ReadToEndAsync();
      var errors = process.StandardError.ReadToEndAsync();
      return new Outcome { ExitCode = Ended(process), Output = output.Result, Errors = errors.Result };
    }
  }

  static Process Start(string example, string arguments) => Process.Start(new ProcessStartInfo {
    FileName = "mono", Arguments = Path.Combine(Folder, example + ".exe") + " " + arguments, WorkingDirectory = Folder,
    UseShellExecute = false, RedirectStandardInput = true, RedirectStandardOutput = true, RedirectStandardError = true
  });

  static int Ended(Process process) {
    if (process.WaitForExit(Patience)) return process.ExitCode;
    process.Kill();
    throw new NotAsExpected("the program did not end");
  }
}
