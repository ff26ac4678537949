// Orbel Band Equalizer on the active document. Run it with File > Scripts > Browse.
(function () {
  // The radii are meant for a picture with a long edge of 1024 pixels.
  var document = app.activeDocument;
  var scale = Math.max(document.width.as("px"), document.height.as("px")) / 1024;
  var settings = new ActionDescriptor();
  settings.putDouble(charIDToTypeID("CON1"), 125); // contrast 1
  settings.putDouble(charIDToTypeID("CON2"), 135); // contrast 2
  settings.putDouble(charIDToTypeID("CON3"), 135); // contrast 3
  settings.putDouble(charIDToTypeID("CON4"), 130); // contrast 4
  settings.putDouble(charIDToTypeID("CON5"), 130); // contrast 5
  settings.putDouble(charIDToTypeID("RAD1"), 3 * scale); // radius 1
  settings.putDouble(charIDToTypeID("RAD2"), 3 * scale); // radius 2
  settings.putDouble(charIDToTypeID("RAD3"), 3 * scale); // radius 3
  settings.putDouble(charIDToTypeID("RAD4"), 3 * scale); // radius 4
  settings.putDouble(charIDToTypeID("RAD5"), 3 * scale); // radius 5
  settings.putDouble(charIDToTypeID("THR1"), 255); // threshold 1
  settings.putDouble(charIDToTypeID("THR2"), 10); // threshold 2
  settings.putDouble(charIDToTypeID("THR3"), 10); // threshold 3
  settings.putDouble(charIDToTypeID("THR4"), 10); // threshold 4
  settings.putDouble(charIDToTypeID("THR5"), 10); // threshold 5
  settings.putBoolean(charIDToTypeID("EDG1"), false); // keep edges 1
  settings.putBoolean(charIDToTypeID("EDG2"), true); // keep edges 2
  settings.putBoolean(charIDToTypeID("EDG3"), true); // keep edges 3
  settings.putBoolean(charIDToTypeID("EDG4"), true); // keep edges 4
  settings.putBoolean(charIDToTypeID("EDG5"), true); // keep edges 5
  settings.putDouble(charIDToTypeID("FCTR"), 100); // base factor
  settings.putBoolean(charIDToTypeID("HALF"), false); // add half
  settings.putBoolean(charIDToTypeID("LUMI"), true); // luminance only
  settings.putInteger(charIDToTypeID("WDTH"), 0); // cross width
  try {
    // Photoshop knows a filter with a scope of its own by that scope.
    executeAction(stringIDToTypeID("6d1f0f5e-7a0c-4c52-9b43-2f6a86a1c7d4"), settings, DialogModes.NO);
  } catch (error) {
    // Hosts without scopes know it by its event.
    try {
      executeAction(charIDToTypeID("obEq"), settings, DialogModes.NO);
    } catch (ignored) {
      throw error;
    }
  }
})();
