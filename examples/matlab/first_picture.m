function picture = first_picture(address)
%FIRST_PICTURE  What the camera of a head sees now, as a matrix of uint8.
%   imshow(first_picture('192.168.0.10'))
%
%   loadlibrary wants a C compiler (mex -setup C) and reads fringix.h as it is: of the four functions that take a function pointer
%   or a window it warns, and leaves them out. Library and header have to be on MATLAB's path or in the current folder.
  if nargin < 1, address = '127.0.0.2'; end
  load_fringix();
  [status, ~, head] = calllib('DAXFringix', 'SLDevAlloc', address, 0);
  require('SLDevAlloc', status);
  closing = onCleanup(@() calllib('DAXFringix', 'SLDevFree', head));

  [status, width, height] = calllib('DAXFringix', 'SLGetCameraSize', head, 0, 0);
  require('SLGetCameraSize', status);
  pixels = zeros(1, double(width) * double(height), 'uint8');
  [status, pixels] = calllib('DAXFringix', 'SLGetLiveImage', head, pixels, width, height);
  require('SLGetLiveImage', status);
  picture = reshape(pixels, width, height)';  % rows come one after the other
end

function load_fringix()
  if libisloaded('DAXFringix'), return; end
  if ispc, file = 'DAXFringix'; else, file = 'libDAXFringix'; end
  loadlibrary(file, 'fringix.h', 'alias', 'DAXFringix');
end

function require(operation, status)
  if status == 0, return; end
  error('fringix:status', '%s: %s (%d)', operation, calllib('DAXFringix', 'SLErrorcodeToChar', status), status);
end
