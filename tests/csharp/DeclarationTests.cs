// The C functions as C# declares them, against the header and the list of exports.
using System;
using System.Collections.Generic;
using System.IO;
using System.Linq;
using System.Reflection;
using System.Runtime.InteropServices;
using System.Text.RegularExpressions;
using Fringix;

public static class DeclarationTests {
  static readonly string tree = Environment.GetEnvironmentVariable("FRINGIX_TREE");

  public static void AllExportsAreDeclaredAndNoOthers() {
    string exports = File.ReadAllText(Path.Combine(tree, "src/resources/DAXFringix.def"));
    MatchCollection rows = Regex.Matches(exports, @"^  (\w+) @\d+", RegexOptions.Multiline);
    List<string> names = rows.Cast<Match>().Select(match => match.Groups[1].Value).ToList();
    Expect.Equal(70, names.Count, "number of exports");
    Expect.Equal(Sorted(names), Sorted(Declared("DAXFringix").Select(method => method.Name)));
  }

  public static void ParametersAreThoseOfTheHeader() {
    Dictionary<string, string> prototypes = Prototypes("fringix.h", "FRINGIX_API");
    foreach (MethodInfo method in Declared("DAXFringix")) Expect.Equal(prototypes[method.Name], ShapeOf(method), method.Name);
  }

  public static void ParametersOfScansAreThoseOfTheHeader() {
    Dictionary<string, string> prototypes = Prototypes("scan.h", "FRINGIX_SCAN_API");
    foreach (MethodInfo method in Declared("fringix-scan")) Expect.Equal(prototypes[method.Name], ShapeOf(method), method.Name);
  }

  public static void EveryStatusOfTheHeadersHasAClass() {
    foreach (string header in new[] { "fringix.h", "scan.h" }) {
      foreach (Match match in Regex.Matches(Header(header), @"#define (SL\w+)\s+\\?\s*\((-\d+)\)")) {
        FringixException exception = new Failure { Operation = "SLTry", Code = int.Parse(match.Groups[2].Value) }.AsException();
        Expect.True(exception.GetType() != typeof(FringixException), "a class for " + match.Groups[1].Value);
        string name = match.Groups[1].Value;
        Expect.Equal(exception.Code > -50 ? name.Replace("SLSCAN_", "SL") : name, exception.Name); // both headers have codes above that
      }
    }
  }

  public static void RecordsHaveTheSizesThatCGivesThem() {
    Expect.Equal(16, Marshal.SizeOf(typeof(DeviceKeyEntry)));
    Expect.Equal(56, Marshal.SizeOf(typeof(DeviceKeyEntryEx)));
    Expect.Equal(16, Marshal.SizeOf(typeof(NativePlan)));
    Expect.Equal(904, Marshal.SizeOf(typeof(NativeCalibration)));
    Expect.Equal(104, Marshal.SizeOf(typeof(NativeSettings)));
    Expect.Equal(120, Marshal.SizeOf(typeof(NativeFindings)));
    Expect.Equal(72, Marshal.SizeOf(typeof(NativeCloud)));
  }

  static string Header(string name) => File.ReadAllText(Path.Combine(tree, "include/fringix", name));

  static IEnumerable<MethodInfo> Declared(string library) =>
      from method in typeof(Native).GetMethods(BindingFlags.Public | BindingFlags.Static)
      let import = (DllImportAttribute)Attribute.GetCustomAttribute(method, typeof(DllImportAttribute))
      where import != null && import.Value == library
      select method;

  static string Sorted(IEnumerable<string> names) => string.Join(" ", names.OrderBy(name => name, StringComparer.Ordinal));

  // "4 8 u1": a number of 4 bytes, a pointer, an unsigned number of 1 byte. The result comes first.
  static Dictionary<string, string> Prototypes(string header, string mark) =>
      Regex.Matches(Header(header), mark + @" ([^(;]*?)(\w+)\(([^)]*)\);").Cast<Match>().ToDictionary(
          match => match.Groups[2].Value,
          match => ShapeOf(match.Groups[1].Value, match.Groups[3].Value));

  static string ShapeOf(string result, string parameters) =>
      string.Join(" ", new[] { result }.Concat(parameters.Split(',').Where(parameter => parameter.Trim() != "void")).Select(ShapeOf));

  static string ShapeOf(string declaration) {
    if (declaration.Contains("*") || declaration.Contains("SLGPIOCallback") || declaration.Contains("SLEventHandler")) return "8";
    Match number = Regex.Match(declaration, @"\b(u?)int(\d+)_t\b");
    Expect.True(number.Success, "a type that is known: " + declaration);
    return number.Groups[1].Value + int.Parse(number.Groups[2].Value) / 8;
  }

  static string ShapeOf(MethodInfo method) =>
      string.Join(" ", new[] { method.ReturnType }.Concat(method.GetParameters().Select(parameter => parameter.ParameterType)).Select(ShapeOf));

  static string ShapeOf(Type type) {
    if (type == typeof(SessionHandle)) return "4"; // of which C reads 4 bytes
    return type == typeof(int) ? "4" : type == typeof(uint) ? "u4" : type == typeof(byte) ? "u1" : "8";
  }
}
