// Runs every public static method of the classes whose name ends with "Tests", and tells what failed.
using System;
using System.Collections.Generic;
using System.Linq;
using System.Reflection;

static class Runner {
  static int Main(string[] arguments) {
    int failed = 0;
    List<MethodInfo> tests = Tests().Where(test => arguments.Length == 0 || NameOf(test).Contains(arguments[0])).ToList();
    foreach (MethodInfo test in tests) {
      string fault = FaultOf(test);
      Console.WriteLine((fault == null ? "passed  " : "FAILED  ") + NameOf(test) + (fault == null ? "" : "\n" + fault));
      if (fault != null) failed++;
    }
    SimulatedHead.EndAll();
    Console.WriteLine("csharp: {0} passed, {1} failed", tests.Count - failed, failed);
    return failed == 0 && tests.Count > 0 ? 0 : 1;
  }

  static IEnumerable<MethodInfo> Tests() =>
      from type in Assembly.GetExecutingAssembly().GetTypes()
      where type.Name.EndsWith("Tests")
      from method in type.GetMethods(BindingFlags.Public | BindingFlags.Static | BindingFlags.DeclaredOnly)
      select method;

  static string NameOf(MethodInfo test) => test.DeclaringType.Name + "." + test.Name;

  static string FaultOf(MethodInfo test) {
    try {
      ((Action)Delegate.CreateDelegate(typeof(Action), test))();
      return null;
    } catch (Exception exception) {
      return exception.ToString();
    }
  }
}

sealed class NotAsExpected : Exception {
  public NotAsExpected(string text) : base(text) {}
}

static class Expect {
  public static void True(bool condition, string what) {
    if (!condition) throw new NotAsExpected("not so: " + what);
  }

  public static void Equal<T>(T expected, T actual, string what = "") {
    if (!EqualityComparer<T>.Default.Equals(expected, actual))
      throw new NotAsExpected(what + " expected: " + expected + ", but it is: " + actual);
  }

  public static void Bytes(byte[] expected, byte[] actual) => Equal(string.Join(",", expected), string.Join(",", actual));

  public static void Contains(string part, string text) => True(text.Contains(part), "\"" + part + "\" is in \"" + text + "\"");

  public static T Throws<T>(Action action) where T : Exception {
    try {
      action();
    } catch (Exception exception) {
      if (exception.GetType() == typeof(T)) return (T)exception;
      throw new NotAsExpected("expected " + typeof(T) + ", but it threw " + exception);
    }
    throw new NotAsExpected("expected " + typeof(T) + ", but nothing was thrown");
  }
}
