function points = scan_to_cloud(address, calibrationFile)
%SCAN_TO_CLOUD  Scans what stands before a head: a point in millimetres per row, also written as cloud.ply.
%   points = scan_to_cloud('192.168.0.10', 'calibration.json')
%
%   The head keeps its calibration: fringix data load 192.168.0.10 calibration.json -o calibration.json
%   loadlibrary wants a C compiler (mex -setup C). It reads fringix.h as it is, but of scan.h only what fringix_scan_matlab.h says
%   in other words. Libraries and headers have to be on MATLAB's path or in the current folder.
  if nargin < 1, address = '127.0.0.2'; end
  if nargin < 2, calibrationFile = 'calibration.json'; end
  load_library('DAXFringix', 'fringix.h');
  load_library('fringix-scan', 'fringix_scan_matlab.h');

  [status, ~, head] = calllib('DAXFringix', 'SLDevAlloc', address, 0);
  require('SLDevAlloc', status);
  closing = onCleanup(@() calllib('DAXFringix', 'SLDevFree', head));
  [~, width, height] = calllib('DAXFringix', 'SLGetCameraSize', head, 0, 0);
  [~, columns] = calllib('DAXFringix', 'SLGetProjectorSize', head, 0, 0);

  [status, plan] = calllib('fringix_scan', 'SLScanPlanDefaults', 0, columns, zeros(1, 4, 'int32'));
  require_scan(status);
  scanner = new_scanner(plan, fileread(calibrationFile));
  freeing = onCleanup(@() calllib('fringix_scan', 'SLScannerFree', scanner));
  measure(head, plan, double(columns), scanner, width, height);
  points = finish(scanner, double(width) * double(height));
  write_ply('cloud.ply', points);
end

function scanner = new_scanner(plan, text)
  [status, ~, calibration] = calllib('fringix_scan', 'SLScanCalibrationRead', text, numel(text), zeros(1, 904, 'uint8'));
  require_scan(status);
  [status, settings] = calllib('fringix_scan', 'SLScanSettingsDefaults', zeros(1, 104, 'uint8'));
  require_scan(status);
  [status, ~, ~, ~, scanner] = calllib('fringix_scan', 'SLScannerAlloc', plan, calibration, settings, uint64(0));
  require_scan(status);
end

function measure(head, plan, columns, scanner, width, height)
  [status, ~, count] = calllib('fringix_scan', 'SLScanPlanPictureCount', plan, 0);
  require_scan(status);
  [status, sequence] = calllib('DAXFringix', 'SLSeqAlloc', head, count, 0);
  require('SLSeqAlloc', status);
  freeing = onCleanup(@() calllib('DAXFringix', 'SLSeqFree', head, sequence));
  for i = 0:count - 1
    [status, ~, line] = calllib('fringix_scan', 'SLScanPlanLine', plan, i, zeros(1, columns, 'uint8'), columns);
    require_scan(status);
    require('SLSeqMakeFromLine8', calllib('DAXFringix', 'SLSeqMakeFromLine8', head, sequence, i, line, columns));
  end
  require('SLStartMeasurement', calllib('DAXFringix', 'SLStartMeasurement', head, sequence));
  picture = zeros(1, double(width) * double(height), 'uint8');
  for i = 0:count - 1
    [status, picture] = calllib('DAXFringix', 'SLGetImageIndex', head, i, picture);
    require('SLGetImageIndex', status);
    require_scan(calllib('fringix_scan', 'SLScanAddPicture', scanner, 0, picture, width, height));
  end
end

function points = finish(scanner, pixels)
  buffer = libpointer('singlePtr', zeros(1, 3 * pixels, 'single'));
  cloud = libstruct('SLScanCloud');
  cloud.pixels = pixels;
  cloud.points = buffer;
  require_scan(calllib('fringix_scan', 'SLScanFinish', scanner, 0, cloud, zeros(1, 120, 'uint8')));
  points = reshape(buffer.Value, 3, pixels)';
  points = points(~isnan(points(:, 1)), :);
end

function write_ply(path, points)
  [file, problem] = fopen(path, 'w');
  if file < 0, error('fringix:file', '%s: %s', path, problem); end
  closing = onCleanup(@() fclose(file));
  fprintf(file, 'ply\nformat ascii 1.0\nelement vertex %d\n', size(points, 1));
  fprintf(file, 'property float x\nproperty float y\nproperty float z\nend_header\n');
  fprintf(file, '%.4f %.4f %.4f\n', points');
end

function load_library(name, header)
  alias = strrep(name, '-', '_');
  if libisloaded(alias), return; end
  if ispc, file = name; else, file = ['lib' name]; end
  loadlibrary(file, header, 'alias', alias);
end

function require(operation, status)
  if status == 0, return; end
  error('fringix:status', '%s: %s (%d)', operation, calllib('DAXFringix', 'SLErrorcodeToChar', status), status);
end

function require_scan(status)
  if status ~= 0, error('fringix:scan', '%s', calllib('fringix_scan', 'SLScanErrorText')); end
end
