// What the build puts in.
declare const ORBEL_PRESETS: any;
declare const ORBEL_WORKER: string;
