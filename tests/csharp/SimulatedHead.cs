// A simulated head that is started as a process of its own, small and quick.
using System;
using System.Collections.Generic;
using System.Diagnostics;
using System.IO;
using System.Threading;

sealed class SimulatedHead : IDisposable {
  public const string Small = "--camera 64x48 --projector 32x20 --image-time 0";
  public const string ForScans = "--camera 320x256 --projector 640x400 --image-time 0";

  static readonly List<SimulatedHead> running = new List<SimulatedHead>();
  static SimulatedHead common;

  readonly Process process;

  public string Address { get; }

  public SimulatedHead(string address, string options = Small) {
    Address = address;
    process = Process.Start(new ProcessStartInfo {
      FileName = Path.Combine(Programs, "fringix-head"), Arguments = "--address " + address + " " + options, UseShellExecute = false,
      RedirectStandardInput = true, RedirectStandardOutput = true
    });
    running.Add(this);
    string line;
    do {
      line = process.StandardOutput.ReadLine();
      if (line == null) throw new InvalidOperationException("the simulated head at " + address + " did not start");
    } while (!line.StartsWith("ready"));
    new Thread(() => process.StandardOutput.ReadToEnd()) { IsBackground = true }.Start(); // or it would wait for room one day
  }

  // Of the build folder.
  public static string Programs => Path.Combine(Environment.GetEnvironmentVariable("FRINGIX_BUILD"), "bin");

  // For tests that leave a head as it was.
  public static string CommonAddress => (common ?? (common = new SimulatedHead("127.0.0.2"))).Address;

  public void RaiseTrigger() {
    process.StandardInput.WriteLine("trigger");
    process.StandardInput.Flush();
  }

  public void Dispose() {
    if (!running.Remove(this)) return;
    process.Kill();
    process.WaitForExit();
  }

  public static void EndAll() {
    foreach (SimulatedHead head in running.ToArray()) head.Dispose();
  }
}
